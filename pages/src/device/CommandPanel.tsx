import type { JSX } from 'preact';

import { commandOf, deviceSwitches, forms, textsOf, type Command, type FormEntry } from './commands';
import { Field } from './Field';
import { SwitchButton } from './SwitchButton';
import type { DeviceState } from './store';

interface Props {
    readonly state: DeviceState | null;
    readonly run: (command: Command) => void;
}

/** Every device command that a person could cause at the TV itself. */
export function CommandPanel({ state, run }: Props): JSX.Element {
    return (
        <section class="device-panel" aria-labelledby="commands-title">
            <h2 id="commands-title">On the TV</h2>
            <div class="device-switches" data-row="switches">
                {deviceSwitches.map(({ command, label, fact, on }) => {
                    const checked = state?.[fact] === on;
                    return (
                        <SwitchButton
                            key={command}
                            label={label}
                            checked={checked}
                            onClick={() => {
                                run({ command, enabled: !checked });
                            }}
                        />
                    );
                })}
            </div>
            {forms.map((form) => (
                <CommandForm key={form.of} form={form} run={run} />
            ))}
        </section>
    );
}

/** A row of fields with its button. The fields keep their text, so that a command is easily repeated. */
function CommandForm({ form, run }: Pick<Props, 'run'> & { readonly form: FormEntry }): JSX.Element {
    const { submit, of, fields } = form;
    return (
        <form
            class="device-form"
            data-row={of}
            onSubmit={(event) => {
                event.preventDefault();
                run(commandOf(form, textsOf(event.currentTarget)));
            }}
        >
            {fields.map((field) => (
                <Field key={field.label} {...field} />
            ))}
            <button type="submit" aria-label={`${submit} ${of}`}>
                {submit}
            </button>
        </form>
    );
}
