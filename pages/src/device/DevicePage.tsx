import type { JSX } from 'preact';

import { CommandPanel } from './CommandPanel';
import { MessagePanel } from './MessagePanel';
import type { DeviceSession } from './session';
import { StatePanel } from './StatePanel';

export type ConnectionState = 'connecting' | 'connected' | 'lost' | 'lockedOut';

const connectionTexts: Readonly<Record<ConnectionState, string>> = {
    connecting: '○ Connecting',
    connected: '● Connected',
    lost: '○ No connection, trying again',
    lockedOut: '○ The host wants a new address: "settingsctl page" prints it',
};

interface Props {
    readonly session: DeviceSession;
    readonly connection: ConnectionState;
    readonly onRetry: () => void;
}

/** The television's side of the settings, for those who develop pages. */
export function DevicePage({ session, connection, onRetry }: Props): JSX.Element {
    return (
        <div class="device">
            <header data-zone>
                <h1>Simulated television</h1>
                <p class="device-mark">Simulation only: no real device is changed</p>
                <p role="status" class="device-connection" data-state={connection}>
                    {connectionTexts[connection]}
                </p>
                {connection === 'lost' && (
                    <button type="button" data-row="retry" onClick={onRetry}>
                        Try now
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
