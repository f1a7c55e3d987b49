import type { JSX } from 'preact';

import { exchangesOf } from './exchanges';
import { clientOf, filterExchanges } from './filter';
import { FilterBar } from './FilterBar';
import { FramePane } from './FramePane';
import { MessageList } from './MessageList';
import type { DeviceStore } from './store';
import { Tools } from './Tools';

/** The messages that pass through the host: what they say in a list, and on demand the frames of the chosen one. */
export function MessagePanel({ store }: { readonly store: DeviceStore }): JSX.Element {
    const { filter, showsFrame } = store.view;
    const log = store.messages;
    const exchanges = exchangesOf(log);
    const shown = filterExchanges(exchanges, filter);
    const serial = store.view.chosen?.first.serial;
    // It may have got its answer, or have left the list.
    const chosen = exchanges.find(({ first }) => first.serial === serial) ?? store.view.chosen;
    return (
        <section class="device-panel device-messages" data-zone aria-labelledby="messages-title">
            <Tools store={store} log={log} shown={shown} />
            <FilterBar
                filter={filter}
                clients={log.messages.map(clientOf).sort()}
                onChange={(changed) => {
                    store.filter(changed);
                }}
            />
            <MessageList exchanges={shown} store={store} />
            {showsFrame && chosen !== null && <FramePane exchange={chosen} store={store} />}
        </section>
    );
}
