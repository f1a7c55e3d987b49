import type { JSX } from 'preact';

import { CommandPanel } from './CommandPanel';
import { MessagePanel } from './MessagePanel';
import type { DeviceSession } from './session';
import { StatePanel } from './StatePanel';

interface Props {
  readonly session: DeviceSession;
  readonly connected: boolean;
}

/** The television's side of the settings, for those who develop pages. */
export function DevicePage({ session, connected }: Props): JSX.Element {
  return (
    <div class="device">
      <header>
        <h1>Simulated television</h1>
        <p class="device-mark">Simulation only: no real device is changed</p>
        <p role="status" class="device-connection" data-connected={connected}>
          {connected ? '● Connected' : '○ No connection, trying again'}
        </p>
      </header>
      <main>
        <div class="device-side">
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
