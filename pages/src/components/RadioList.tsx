import type { ComponentChildren, JSX } from 'preact';

import { Icon } from '../icons';

export interface RadioOption {
    readonly value: string;
    readonly words: ComponentChildren;
    /** A second line. */
    readonly about?: ComponentChildren;
}

interface Props {
    readonly label: string;
    readonly options: readonly RadioOption[];
    readonly chosen: string | undefined;
    readonly onChoose: (value: string) => void;
    readonly onFocus?: (value: string) => void;
}

/** Choices below each other, one of them chosen. */
export function RadioList({ label, options, chosen, onChoose, onFocus }: Props): JSX.Element {
    return (
        <div role="radiogroup" aria-label={label}>
            {options.map(({ value, words, about }) => (
                <div key={value} class="row" data-row={value}>
                    <button
                        type="button"
                        class="control"
                        role="radio"
                        aria-checked={value === chosen}
                        onFocus={() => onFocus?.(value)}
                        onClick={() => {
                            onChoose(value);
                        }}
                    >
                        <Icon name={value === chosen ? 'chosen' : 'open'} />
                        <bdi class="name">{words}</bdi>
                        {about !== undefined && <span class="value">{about}</span>}
                    </button>
                </div>
            ))}
        </div>
    );
}
