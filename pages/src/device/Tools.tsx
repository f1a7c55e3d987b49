import type { JSX } from 'preact';

import { CopyButton } from './CopyButton';
import { messagesOf, type Exchange } from './exchanges';
import type { LogView } from './messageLog';
import { scenarioOf } from './scenario';
import type { DeviceStore } from './store';

interface Props {
    readonly store: DeviceStore;
    readonly log: LogView;
    readonly shown: readonly Exchange[];
}

/** The title of the messages, what can be done with all of them, and what was done. */
export function Tools({ store, log, shown }: Props): JSX.Element {
    const messages = messagesOf(shown);
    return (
        <div class="device-tools" data-row="tools">
            <h2 id="messages-title">Messages</h2>
            <button
                type="button"
                aria-pressed={log.paused}
                onClick={() => {
                    store.pause(!log.paused);
                }}
            >
                Pause
            </button>
            <button
                type="button"
                onClick={() => {
                    store.clear();
                }}
            >
                Clear
            </button>
            <CopyButton
                label="Copy as scenario, with personal values"
                what={`${messages.length} messages`}
                text={() => scenarioOf(messages)}
                store={store}
                disabled={messages.length === 0}
            />
            <p>
                {messages.length} of {log.messages.length}
            </p>
            <p role="status">{log.paused && `Paused: ${log.waiting} new`}</p>
            <p role="status">{store.view.copied}</p>
        </div>
    );
}
