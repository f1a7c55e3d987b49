import type { ComponentChildren, JSX } from 'preact';
import { useState } from 'preact/hooks';

import { deviceSwitches, reportedKeys, localesIn, type Command, type Outcome } from './commands';
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

const timeZones = Intl.supportedValuesOf('timeZone');

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
            <CommandForm
                submit="Change"
                of="locale"
                onSubmit={([value = '']) => {
                    send({ command: 'locale', value: value.trim() });
                }}
            >
                <Field label="Locale" hint="fr-FR" />
            </CommandForm>
            <CommandForm
                submit="Change"
                of="locales"
                onSubmit={([text = '']) => {
                    send({ command: 'locales', values: localesIn(text) });
                }}
            >
                <Field label="Locales, primary first" hint="fr-FR, en-US" />
            </CommandForm>
            <CommandForm
                submit="Change"
                of="time zone"
                onSubmit={([value = '']) => {
                    send({ command: 'timezone', value: value.trim() });
                }}
            >
                <Field label="Time zone" hint="Europe/Paris" choices={timeZones} />
            </CommandForm>
            <CommandForm
                submit="Report"
                of="setting"
                onSubmit={([key = '', value = '']) => {
                    send({ command: 'setting', key, value });
                }}
            >
                <Field label="Setting" hint="deviceName" choices={reportedKeys} />
                <Field label="Value" hint="Den" />
            </CommandForm>
            <p class="device-result" role="status" data-outcome={result?.outcome.ok}>
                {result === null ? '' : resultText(result)}
            </p>
        </section>
    );
}

function resultText({ command, outcome }: Result): string {
    const name = visible(JSON.stringify(command));
    if (!outcome.ok) {
        return `✗ ${visible(outcome.code)}: ${visible(outcome.message)} – ${name}`;
    }
    return outcome.changed === false ? `= No change: ${name}` : `✓ Done: ${name}`;
}

interface FormProps {
    /** The text of the button, and its object, for screen readers. */
    readonly submit: string;
    readonly of: string;
    readonly onSubmit: (values: readonly string[]) => void;
    readonly children: ComponentChildren;
}

/** A row of fields with its button. The fields keep their text, so that a command is easily repeated. */
function CommandForm({ submit, of, onSubmit, children }: FormProps): JSX.Element {
    return (
        <form
            class="device-form"
            data-row={of}
            onSubmit={(event) => {
                event.preventDefault();
                onSubmit([...event.currentTarget.querySelectorAll('input')].map((field) => field.value));
            }}
        >
            {children}
            <button type="submit" aria-label={`${submit} ${of}`}>
                {submit}
            </button>
        </form>
    );
}

interface FieldProps {
    readonly label: string;
    readonly hint: string;
    readonly choices?: readonly string[];
}

function Field({ label, hint, choices }: FieldProps): JSX.Element {
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
