import type { JSX } from 'preact';

import { CommandPanel } from './CommandPanel';
import type { Command } from './commands';
import { FaultPanel } from './FaultPanel';
import { Header } from './Header';
import { MessagePanel } from './MessagePanel';
import { ResultLine } from './ResultLine';
import { StatePanel } from './StatePanel';
import type { DeviceStore } from './store';

interface Props {
    readonly store: DeviceStore;
    readonly onRetry: () => void;
}

/** The page of the simulated TV, for developers of pages. */
export function DevicePage({ store, onRetry }: Props): JSX.Element {
    const { connection, faults, state, result } = store.view;
    const run = (command: Command) => {
        store.run(command);
    };
    return (
        <div class="device">
            <Header connection={connection} faults={faults} onRetry={onRetry} />
            <main>
                <div class="device-side" data-zone>
                    <div class="device-panels">
                        <CommandPanel state={state} run={run} />
                        <StatePanel state={state} />
                        <FaultPanel faults={faults} run={run} />
                    </div>
                    <ResultLine result={result} />
                </div>
                <MessagePanel store={store} />
            </main>
        </div>
    );
}
