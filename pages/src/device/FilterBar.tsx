import type { JSX } from 'preact';

import { settingKeys } from '../settings/catalogue';
import { groups, type Filter } from './filter';
import { visible } from './format';
import { frameKinds } from './kinds';

interface Props {
    readonly filter: Filter;
    /** The clients of the messages. */
    readonly clients: readonly string[];
    readonly onChange: (filter: Filter) => void;
}

export function FilterBar({ filter, clients, onChange }: Props): JSX.Element {
    return (
        <div class="device-filter" data-row="filter" role="search">
            <label>
                <span>Text</span>
                <input
                    type="search"
                    value={filter.text}
                    autocomplete="off"
                    spellcheck={false}
                    onInput={(event) => {
                        onChange({ ...filter, text: event.currentTarget.value });
                    }}
                />
            </label>
            <Choice
                label="Key"
                choices={settingKeys}
                chosen={filter.setting}
                onChoose={(setting) => {
                    onChange({ ...filter, setting });
                }}
            />
            <Choice
                label="Type"
                choices={frameKinds}
                chosen={filter.type}
                onChoose={(type) => {
                    onChange({ ...filter, type });
                }}
            />
            <Choice
                label="Client"
                choices={[...groups, ...clients]}
                chosen={filter.client}
                onChoose={(client) => {
                    onChange({ ...filter, client });
                }}
            />
        </div>
    );
}

interface ChoiceProps<Value extends string> {
    readonly label: string;
    readonly choices: readonly Value[];
    readonly chosen: Value | null;
    readonly onChoose: (value: Value | null) => void;
}

/** One of the choices, or all. What was chosen stays a choice when no message has it. */
function Choice<Value extends string>({ label, choices, chosen, onChoose }: ChoiceProps<Value>): JSX.Element {
    const all = [...new Set(chosen === null ? choices : [...choices, chosen])];
    return (
        <label>
            <span>{label}</span>
            <select
                value={chosen ?? ''}
                onChange={(event) => {
                    const { value } = event.currentTarget;
                    onChoose(all.find((choice) => choice === value) ?? null);
                }}
            >
                <option value="">all</option>
                {all.map((choice) => (
                    <option key={choice} value={choice}>
                        {visible(choice)}
                    </option>
                ))}
            </select>
        </label>
    );
}
