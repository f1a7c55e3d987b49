import type { JSX } from 'preact';

import type { Fault } from './faults';
import { visible } from './format';
import type { ConnectionState } from './store';

const connectionTexts: Readonly<Record<ConnectionState, string>> = {
    connecting: '○ Connecting',
    connected: '● Connected',
    lost: '○ Disconnected, trying again',
    unauthorized: '○ Not authorized: open the new address that "settingsctl page" prints',
};

interface Props {
    readonly connection: ConnectionState;
    readonly faults: readonly Fault[];
    readonly onRetry: () => void;
}

/** What must be known at a glance: that this is a simulation, its faults, the connection. */
export function Header({ connection, faults, onRetry }: Props): JSX.Element {
    const names = faults.filter(({ on }) => on).map(({ name }) => visible(name));
    return (
        <header data-zone>
            <h1>Simulated TV</h1>
            <p class="device-mark">Simulation only: no real device is changed</p>
            <p role="status" class="device-alarm">
                {names.length > 0 && `⚠ Faults on: ${names.join(', ')}`}
            </p>
            <p role="status" class="device-connection" data-state={connection}>
                {connectionTexts[connection]}
            </p>
            {connection === 'lost' && (
                <button type="button" data-row="retry" onClick={onRetry}>
                    Try again now
                </button>
            )}
        </header>
    );
}
