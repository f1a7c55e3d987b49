import type { JSX, RefObject } from 'preact';
import { useEffect, useRef } from 'preact/hooks';

import type { Exchange } from './exchanges';
import { lineId, MessageLine } from './MessageLine';
import { keyAction } from './listKeys';
import type { DeviceStore } from './store';

interface Props {
    readonly exchanges: readonly Exchange[];
    readonly store: DeviceStore;
}

/** One line per exchange, oldest first. Follows the newest until one is chosen. */
export function MessageList({ exchanges, store }: Props): JSX.Element {
    const { chosen, showsFrame } = store.view;
    const active = exchanges.find(({ first }) => first.serial === chosen?.first.serial);
    const list = useScrolledList(active, exchanges.at(-1), showsFrame);
    // Keys may come faster than the page is drawn: the choice is that of now.
    const onKeyDown = (event: KeyboardEvent) => {
        const action = keyAction(event.key, exchanges, store.view);
        if (action !== null) {
            event.preventDefault();
            event.stopPropagation();
            store.show(action);
        } else if (event.key === 'Enter') {
            document.querySelector<HTMLElement>('.device-frames pre')?.focus();
        }
    };
    return (
        <ul
            ref={list}
            class="device-list"
            data-row="list"
            role="listbox"
            tabIndex={0}
            aria-label="Messages, oldest first; Enter shows the frames"
            aria-activedescendant={active && lineId(active)}
            onKeyDown={onKeyDown}
        >
            {exchanges.map((exchange) => (
                <MessageLine
                    key={exchange.first.serial}
                    exchange={exchange}
                    selected={exchange === active}
                    onClick={() => {
                        store.show({ chosen: exchange, showsFrame: exchange !== active || !showsFrame });
                    }}
                />
            ))}
            {exchanges.length === 0 && (
                <li role="option" aria-selected="false" aria-disabled="true">
                    No messages. Change a setting, or clear the filter.
                </li>
            )}
        </ul>
    );
}

/** A list that scrolls to its active line, or else to its newest. */
function useScrolledList(
    active: Exchange | undefined,
    newest: Exchange | undefined,
    showsFrame: boolean,
): RefObject<HTMLUListElement> {
    const list = useRef<HTMLUListElement>(null);
    useEffect(() => {
        const line = active === undefined ? list.current?.lastElementChild : document.getElementById(lineId(active));
        if (list.current && line) {
            const [outer, inner] = [list.current.getBoundingClientRect(), line.getBoundingClientRect()];
            // The list, never the page around it.
            list.current.scrollTop += Math.min(0, inner.top - outer.top) + Math.max(0, inner.bottom - outer.bottom);
        }
    }, [active?.first.serial, newest?.first.serial, showsFrame]);
    return list;
}
