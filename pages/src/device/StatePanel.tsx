import type { JSX } from 'preact';

import { visible } from './format';
import type { DeviceState } from './store';

/** The current state of the simulated device and its voice SDK. */
export function StatePanel({ state }: { readonly state: DeviceState | null }): JSX.Element {
    return (
        <section class="device-panel" aria-labelledby="state-title">
            <h2 id="state-title">State</h2>
            {state === null ? (
                <p>Unknown</p>
            ) : (
                <dl class="device-state">
                    {Object.entries(state).map(([fact, value]) => (
                        <div key={fact}>
                            <dt>{visible(fact)}</dt>
                            <dd>{value === '' ? '(empty)' : visible(value)}</dd>
                        </div>
                    ))}
                </dl>
            )}
        </section>
    );
}
