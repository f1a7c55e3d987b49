import type { JSX } from 'preact';
import { useMemo, useState } from 'preact/hooks';

import { Icon } from '../icons';
import { usePage } from './context';
import { Dialog } from './Dialog';
import { Field } from './Field';

export interface Option {
    readonly value: string;
    readonly words: string;
}

interface Props {
    readonly title: string;
    readonly options: readonly Option[];
    readonly chosen?: string | undefined;
    readonly onChoose: (value: string) => void;
    readonly onClose: () => void;
}

function plain(text: string): string {
    return text.normalize('NFD').replace(/\p{M}/gu, '').replace(/[_/-]/g, ' ').toLowerCase();
}

/** The options that contain every typed word. */
export function matching(options: readonly Option[], typed: string): readonly Option[] {
    const words = plain(typed).split(/\s+/).filter(Boolean);
    return options.filter(({ value, words: shown }) => {
        const text = plain(`${value} ${shown}`);
        return words.every((word) => text.includes(word));
    });
}

/** A dialog with a searchable list of options. */
export function Picker({ title, options, chosen, onChoose, onClose }: Props): JSX.Element {
    const { language } = usePage();
    const [typed, setTyped] = useState('');
    const found = useMemo(() => matching(options, typed), [options, typed]);
    const chosenFirst = [...found].sort(
        (left, right) => Number(right.value === chosen) - Number(left.value === chosen),
    );
    return (
        <Dialog title={title} onClose={onClose}>
            <Field row="search" label={language.t('search')} text={typed} onEdit={setTyped} />
            <p class="about" role="status">
                {found.length === 0 ? language.t('nothingFound') : language.t('found', { count: `${found.length}` })}
            </p>
            <ul class="options">
                {chosenFirst.map(({ value, words }) => (
                    <li key={value} data-row={value}>
                        <button
                            type="button"
                            class="option"
                            aria-pressed={value === chosen}
                            onClick={() => {
                                onChoose(value);
                            }}
                        >
                            {value === chosen && <Icon name="done" />}
                            <bdi>{words}</bdi>
                        </button>
                    </li>
                ))}
            </ul>
            <div class="buttons" data-row="close">
                <button type="button" class="button" onClick={onClose}>
                    {language.t('close')}
                </button>
            </div>
        </Dialog>
    );
}
