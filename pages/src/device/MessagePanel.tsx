import type { JSX } from 'preact';
import { useState } from 'preact/hooks';

import { everything, filterMessages } from './filter';
import { FilterBar } from './FilterBar';
import { asText, pretty, timeOfDay } from './format';
import type { LogView } from './messageLog';
import { MessageList } from './MessageList';
import type { Message } from './messages';

/** How much of one message is laid out; the clipboard gets all of it. */
const longestShown = 20_000;

interface Props {
    readonly view: LogView;
    readonly onPause: (paused: boolean) => void;
    readonly onClear: () => void;
}

/** What goes through the host: the list, and the chosen message, or else the newest, in full. */
export function MessagePanel({ view, onPause, onClear }: Props): JSX.Element {
    const [filter, setFilter] = useState(everything);
    const [chosen, setChosen] = useState<Message | null>(null);
    const [copied, setCopied] = useState('');

    const shown = filterMessages(view.messages, filter);
    const detail = chosen ?? shown.at(-1) ?? null;
    const copy = (what: string, text: string) => {
        void copyText(text).then((done) => {
            setCopied(done ? `Copied ${what}.` : 'The browser does not let this page copy.');
        });
    };

    return (
        <section class="device-panel device-messages" data-zone aria-labelledby="messages-title">
            <h2 id="messages-title">Messages</h2>
            <FilterBar filter={filter} onChange={setFilter} />
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
                <button
                    type="button"
                    onClick={() => {
                        setChosen(null);
                        onClear();
                    }}
                >
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
            <MessageList messages={shown} chosen={chosen} onChoose={setChosen} />
            <MessageDetail message={detail} />
        </section>
    );
}

function pauseText({ paused, waiting, lost }: LogView): string {
    if (!paused) {
        return '';
    }
    return `Paused; ${waiting} more came` + (lost === 0 ? '.' : `, the first ${lost} of them are gone.`);
}

function MessageDetail({ message }: { readonly message: Message | null }): JSX.Element {
    if (message === null) {
        return <p class="device-detail">Nothing here yet. Change a setting, or take away the filter.</p>;
    }
    const { timestamp, direction, door, client, kind, text } = message;
    const way = direction === 'in' ? 'from' : 'to';
    const whole = pretty(text);
    return (
        <div class="device-detail" data-row="detail">
            <p>
                {timeOfDay(timestamp)} {kind} {way} {client === null ? 'every client' : `${door} client ${client}`},{' '}
                {text.length} characters
            </p>
            <pre tabIndex={0} role="region" aria-label="The message in full">
                {whole.slice(0, longestShown)}
                {whole.length > longestShown && `\n… ${whole.length - longestShown} more; copy the message to see all`}
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
