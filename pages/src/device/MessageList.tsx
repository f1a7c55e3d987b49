import type { JSX, RefObject } from 'preact';
import { useEffect, useRef } from 'preact/hooks';

import { summary, timeOfDay } from './format';
import type { Message } from './messages';

interface Props {
    readonly messages: readonly Message[];
    /** Null while the list follows the newest. */
    readonly chosen: Message | null;
    readonly onChoose: (message: Message | null) => void;
}

/** One line per message, oldest first. Follows the newest message until one is chosen; Escape follows again. */
export function MessageList({ messages, chosen, onChoose }: Props): JSX.Element {
    const active = messages.find(({ serial }) => serial === chosen?.serial);
    const list = useScrolledList(active, messages.at(-1));
    const onKeyDown = (event: KeyboardEvent) => {
        const next = nextChoice(event.key, messages, chosen);
        if (next !== undefined) {
            event.preventDefault();
            event.stopPropagation();
            onChoose(next);
        }
    };

    return (
        <ul
            ref={list}
            class="device-list"
            data-row="list"
            role="listbox"
            tabIndex={0}
            aria-label="Messages, oldest first"
            aria-activedescendant={active && lineId(active)}
            onKeyDown={onKeyDown}
        >
            {messages.map((message) => (
                <Line
                    key={message.serial}
                    message={message}
                    selected={message === active}
                    onClick={() => {
                        onChoose(message === active ? null : message);
                    }}
                />
            ))}
        </ul>
    );
}

/** A list that scrolls to its active line, or else to its newest. */
function useScrolledList(active: Message | undefined, newest: Message | undefined): RefObject<HTMLUListElement> {
    const list = useRef<HTMLUListElement>(null);
    useEffect(() => {
        if (list.current !== null) {
            const { lastElementChild } = list.current;
            showLine(list.current, active === undefined ? lastElementChild : document.getElementById(lineId(active)));
        }
    }, [active, newest?.serial]);
    return list;
}

interface LineProps {
    readonly message: Message;
    readonly selected: boolean;
    readonly onClick: () => void;
}

function Line({ message, selected, onClick }: LineProps): JSX.Element {
    const { timestamp, direction, listener, client, kind, text } = message;
    return (
        <li id={lineId(message)} role="option" aria-selected={selected} data-kind={kind} onClick={onClick}>
            <span>{timeOfDay(timestamp)}</span>
            <span>{direction === 'in' ? '→ in' : '← out'}</span>
            <span>
                {listener} {client}
            </span>
            <span>{kind}</span>
            <code>{summary(text)}</code>
        </li>
    );
}

function lineId({ serial }: Message): string {
    return `message-${serial}`;
}

/** Scrolls the list, never the page around it. */
function showLine(list: HTMLElement, line: Element | null): void {
    if (line !== null) {
        const [outer, inner] = [list.getBoundingClientRect(), line.getBoundingClientRect()];
        list.scrollTop += Math.min(0, inner.top - outer.top) + Math.max(0, inner.bottom - outer.bottom);
    }
}

/** The choice after a key, null for none; undefined when the list does not use the key, as an arrow that leaves it. */
export function nextChoice(
    key: string,
    messages: readonly Message[],
    chosen: Message | null,
): Message | null | undefined {
    const last = messages.length - 1;
    const index = messages.findIndex(({ serial }) => serial === chosen?.serial);
    const at = (place: number) => messages[Math.min(Math.max(place, 0), last)];
    switch (key) {
        case 'ArrowUp':
            return index === 0 ? undefined : at(index < 0 ? last : index - 1);
        case 'ArrowDown':
            return index >= 0 && index === last ? undefined : at(index < 0 ? last : index + 1);
        case 'Home':
            return at(0);
        case 'End':
            return at(last);
        case 'Escape':
            return chosen === null ? undefined : null;
        default:
            return undefined;
    }
}
