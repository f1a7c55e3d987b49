import type { JSX } from 'preact';
import { useState } from 'preact/hooks';

import { deviceSwitches, forms, type Command, type FieldEntry, type FormEntry, type Outcome } from './commands';
import { visible } from './format';
import type { DeviceState } from './session';

interface Props {
    readonly state: DeviceState | null;
    readonly run: (command: Command) => Promise<Outcome>;
}

interface Result {
    readonly command: Command;
    readonly outcome: Outcome;
}

/** Every device command that a person could cause at the TV itself, and the result of the last one. */
export function CommandPanel({ state, run }: Props): JSX.Element {
    const [result, setResult] = useState<Result | null>(null);
    const send = (command: Command) => {
        void run(command).then((outcome) => {
            setResult({ command, outcome });
        });
    };
    return (
        <section class="device-panel" aria-labelledby="commands-title">
            <h2 id="commands-title">On the TV</h2>
            <Switches state={state} send={send} />
            {forms.map((form) => (
                <CommandForm key={form.of} form={form} send={send} />
            ))}
            <p class="device-result" role="status" data-outcome={result?.outcome.ok}>
                {result === null ? '' : resultText(result)}
            </p>
        </section>
    );
}

interface SenderProps {
    readonly send: (command: Command) => void;
}

function Switches({ state, send }: SenderProps & Pick<Props, 'state'>): JSX.Element {
    return (
        <div class="device-switches" data-row="switches">
            {deviceSwitches.map(({ command, label, fact, on }) => {
                const checked = state?.[fact] === on;
                return (
                    <button
                        key={command}
                        type="button"
                        role="switch"
                        aria-checked={checked}
                        onClick={() => {
                            send({ command, enabled: !checked });
                        }}
                    >
                        {label}
                        <span aria-hidden="true">{checked ? 'on' : 'off'}</span>
                    </button>
                );
            })}
        </div>
    );
}

/** A row of fields with its button. The fields keep their text, so that a command is easily repeated. */
function CommandForm({ form, send }: SenderProps & { readonly form: FormEntry }): JSX.Element {
    const { submit, of, fields, commandOf } = form;
    return (
        <form
            class="device-form"
            data-row={of}
            onSubmit={(event) => {
                event.preventDefault();
                send(commandOf([...event.currentTarget.querySelectorAll('input')].map((field) => field.value)));
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

function resultText({ command, outcome }: Result): string {
    const name = visible(JSON.stringify(command));
    if (!outcome.ok) {
        return `✗ ${visible(outcome.code)}: ${visible(outcome.message)} – ${name}`;
    }
    return outcome.changed === false ? `= No change: ${name}` : `✓ Done: ${name}`;
}

function Field({ label, hint, choices }: FieldEntry): JSX.Element {
    const list = choices === undefined ? undefined : `choices-${label.replace(/\W/g, '-')}`;
    return (
        <label>
            <span>{label}</span>
            <input type="text" placeholder={hint} list={list} autocomplete="off" spellcheck={false} />
            {choices !== undefined && (
                <datalist id={list}>
                    {choices.map((choice) => (
                        <option key={choice} value={choice} />
                    ))}
                </datalist>
            )}
        </label>
    );
}
