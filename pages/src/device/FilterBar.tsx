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
    const choices = [
        ['Key', 'setting', settingKeys],
        ['Type', 'type', frameKinds],
        ['Client', 'client', [...groups, ...clients]],
    ] as const;
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
            {choices.map(([label, part, values]) => (
                <Choice
                    key={part}
                    label={label}
                    values={values}
                    chosen={filter[part]}
                    onChoose={(value) => {
                        onChange({ ...filter, [part]: value });
                    }}
                />
            ))}
        </div>
    );
}

interface ChoiceProps {
    readonly label: string;
    readonly values: readonly string[];
    readonly chosen: string | null;
    readonly onChoose: (value: string | null) => void;
}

/** One of the values, or all. What was chosen stays a choice when no message has it. */
function Choice({ label, values, chosen, onChoose }: ChoiceProps): JSX.Element {
    return (
        <label>
            <span>{label}</span>
            <select
                value={chosen ?? ''}
                onChange={(event) => {
                    onChoose(event.currentTarget.value || null);
                }}
            >
                <option value="">all</option>
                {[...new Set([...values, ...(chosen === null ? [] : [chosen])])].map((value) => (
                    <option key={value} value={value}>
                        {visible(value)}
                    </option>
                ))}
            </select>
        </label>
    );
}
