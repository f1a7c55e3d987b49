import type { JSX } from 'preact';

import { CommandPanel } from './CommandPanel';
import { MessagePanel } from './MessagePanel';
import type { DeviceSession } from './session';
import { StatePanel } from './StatePanel';

export type ConnectionState = 'connecting' | 'connected' | 'lost' | 'unauthorized';

const connectionTexts: Readonly<Record<ConnectionState, string>> = {
    connecting: '○ Connecting',
    connected: '● Connected',
    lost: '○ Disconnected, trying again',
    unauthorized: '○ Not authorized: open the new address that "settingsctl page" prints',
};

interface Props {
    readonly session: DeviceSession;
    readonly connection: ConnectionState;
    readonly onRetry: () => void;
}

/** The page of the simulated TV, for developers of pages. */
export function DevicePage({ session, connection, onRetry }: Props): JSX.Element {
    return (
        <div class="device">
            <header data-zone>
                <h1>Simulated TV</h1>
                <p class="device-mark">Simulation only: no real device is changed</p>
                <p role="status" class="device-connection" data-state={connection}>
                    {connectionTexts[connection]}
                </p>
                {connection === 'lost' && (
                    <button type="button" data-row="retry" onClick={onRetry}>
                        Try again now
                    </button>
                )}
            </header>
            <main>
                <div class="device-side" data-zone>
                    <CommandPanel state={session.deviceState} run={(command) => session.run(command)} />
                    <StatePanel state={session.deviceState} />
                </div>
                <MessagePanel
                    view={session.view()}
                    onPause={(paused) => {
                        session.pause(paused);
                    }}
                    onClear={() => {
                        session.clear();
                    }}
                />
            </main>
        </div>
    );
}
