import type { JSX } from 'preact';

import { textsOf, type Command } from './commands';
import { faultCommand, type Fault } from './faults';
import { visible } from './format';
import { SwitchButton } from './SwitchButton';

interface Props {
    readonly faults: readonly Fault[];
    readonly run: (command: Command) => void;
}

/** A switch for each fault that the host knows; nothing with a host that knows none. */
export function FaultPanel({ faults, run }: Props): JSX.Element | null {
    if (faults.length === 0) {
        return null;
    }
    return (
        <section class="device-panel" aria-labelledby="faults-title">
            <h2 id="faults-title">Faults</h2>
            {faults.map((fault) => (
                <FaultForm key={fault.name} fault={fault} run={run} />
            ))}
        </section>
    );
}

/** Its button, or Enter in its field, switches it; when it is on, another value replaces the old one. */
function FaultForm({ fault, run }: Pick<Props, 'run'> & { readonly fault: Fault }): JSX.Element {
    const name = visible(fault.name);
    return (
        <form
            class="device-form device-fault"
            data-row={name}
            onSubmit={(event) => {
                event.preventDefault();
                run(faultCommand(fault, textsOf(event.currentTarget)[0] ?? ''));
            }}
        >
            <FaultValue fault={fault} label={`Value of ${name}`} />
            {fault.once ? <button type="submit">{name}</button> : <SwitchButton label={name} checked={fault.on} />}
            <p>{visible(fault.description)}</p>
        </form>
    );
}

function FaultValue({ fault, label }: { readonly fault: Fault; readonly label: string }): JSX.Element | null {
    const { kind, value = fault.default, settings } = fault;
    if (settings) {
        return (
            <select aria-label={label}>
                {settings.map((key) => (
                    <option key={key} selected={key === value}>
                        {key}
                    </option>
                ))}
            </select>
        );
    }
    return kind === 'milliseconds' ? <input aria-label={label} placeholder={`${value} ms`} autocomplete="off" /> : null;
}
