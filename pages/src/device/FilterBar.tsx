import type { JSX } from 'preact';

import type { Filter } from './filter';
import { directions, listeners, frameKinds } from './messages';

interface Props {
    readonly filter: Filter;
    readonly onChange: (filter: Filter) => void;
}

export function FilterBar({ filter, onChange }: Props): JSX.Element {
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
                label="Direction"
                choices={directions}
                chosen={filter.direction}
                onChoose={(direction) => {
                    onChange({ ...filter, direction });
                }}
            />
            <Choice
                label="Listener"
                choices={listeners}
                chosen={filter.listener}
                onChoose={(listener) => {
                    onChange({ ...filter, listener });
                }}
            />
            <Choice
                label="Type"
                choices={frameKinds}
                chosen={filter.kind}
                onChoose={(kind) => {
                    onChange({ ...filter, kind });
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

function Choice<Value extends string>({ label, choices, chosen, onChoose }: ChoiceProps<Value>): JSX.Element {
    return (
        <label>
            <span>{label}</span>
            <select
                value={chosen ?? ''}
                onChange={(event) => {
                    const { value } = event.currentTarget;
                    onChoose(choices.find((choice) => choice === value) ?? null);
                }}
            >
                <option value="">all</option>
                {choices.map((choice) => (
                    <option key={choice} value={choice}>
                        {choice}
                    </option>
                ))}
            </select>
        </label>
    );
}
