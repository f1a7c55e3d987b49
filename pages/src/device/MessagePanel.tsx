import type { JSX } from 'preact';
import { useState } from 'preact/hooks';

import { everything, filterMessages } from './filter';
import { FilterBar } from './FilterBar';
import { asText, pretty, timeOfDay } from './format';
import type { LogView } from './messageLog';
import { MessageList } from './MessageList';
import type { Message } from './messages';

/** How many characters of a message are shown; the clipboard gets all of it. */
const maxShown = 20_000;

interface Props {
    readonly view: LogView;
    readonly onPause: (paused: boolean) => void;
    readonly onClear: () => void;
}

/** The messages that pass through the host: a list, and the chosen or else the newest one in full. */
export function MessagePanel({ view, onPause, onClear }: Props): JSX.Element {
    const [filter, setFilter] = useState(everything);
    const [chosen, setChosen] = useState<Message | null>(null);

    const shown = filterMessages(view.messages, filter);
    const detail = chosen ?? shown.at(-1) ?? null;
    return (
        <section class="device-panel device-messages" data-zone aria-labelledby="messages-title">
            <h2 id="messages-title">Messages</h2>
            <FilterBar filter={filter} onChange={setFilter} />
            <Tools
                view={view}
                shown={shown}
                detail={detail}
                onPause={onPause}
                onClear={() => {
                    setChosen(null);
                    onClear();
                }}
            />
            <MessageList messages={shown} chosen={chosen} onChoose={setChosen} />
            <MessageDetail message={detail} />
        </section>
    );
}

interface ToolsProps extends Props {
    readonly shown: readonly Message[];
    readonly detail: Message | null;
}

function Tools({ view, shown, detail, onPause, onClear }: ToolsProps): JSX.Element {
    const [copied, setCopied] = useState('');
    const copy = (what: string, text: string) => {
        void copyText(text).then((done) => {
            setCopied(done ? `Copied ${what}.` : 'The browser did not allow copying.');
        });
    };

    return (
        <div class="device-tools" data-row="tools">
            <button
                type="button"
                aria-pressed={view.paused}
                onClick={() => {
                    onPause(!view.paused);
                }}
            >
                Pause
            </button>
            <button type="button" onClick={onClear}>
                Clear
            </button>
            <button
                type="button"
                disabled={detail === null}
                onClick={() => {
                    copy('the message', detail?.text ?? '');
                }}
            >
                Copy message
            </button>
            <button
                type="button"
                disabled={shown.length === 0}
                onClick={() => {
                    copy(`${shown.length} messages`, asText(shown));
                }}
            >
                Copy list
            </button>
            <p>
                {shown.length} of {view.messages.length}
            </p>
            <p role="status">{pauseText(view)}</p>
            <p role="status">{copied}</p>
        </div>
    );
}

function pauseText({ paused, waiting, lost }: LogView): string {
    if (!paused) {
        return '';
    }
    return `Paused: ${waiting} new` + (lost === 0 ? '' : `, ${lost} of them dropped`);
}

function MessageDetail({ message }: { readonly message: Message | null }): JSX.Element {
    if (message === null) {
        return <p class="device-detail">No messages. Change a setting, or clear the filter.</p>;
    }
    const { timestamp, direction, listener, client, kind, text } = message;
    const preposition = direction === 'in' ? 'from' : 'to';
    const whole = pretty(text);
    return (
        <div class="device-detail" data-row="detail">
            <p>
                {timeOfDay(timestamp)} {kind} {preposition}{' '}
                {client === null ? 'every client' : `${listener} client ${client}`}, {text.length} characters
            </p>
            <pre tabIndex={0} role="region" aria-label="The message in full">
                {whole.slice(0, maxShown)}
                {whole.length > maxShown &&
                    `\n… ${whole.length - maxShown} more characters; copy the message to see all`}
            </pre>
        </div>
    );
}

async function copyText(text: string): Promise<boolean> {
    try {
        await navigator.clipboard.writeText(text);
        return true;
    } catch {
        return false;
    }
}
