import type { JSX } from 'preact';
import { useMemo, useState } from 'preact/hooks';

import { plain } from '../settings/plain';
import { usePage } from './context';
import { Field } from './Field';
import { Panel } from './Panel';
import { Row } from './Row';

export interface Option {
    readonly value: string;
    readonly words: string;
}

interface Props {
    readonly title: string;
    readonly options: readonly Option[];
    readonly onChoose: (value: string) => void;
    readonly onClose: () => void;
}

/** The options that contain every typed word. */
export function matching(options: readonly Option[], typed: string): readonly Option[] {
    const wanted = plain(typed).split(' ');
    return options.filter(({ value, words }) => {
        const text = plain(`${value} ${words}`);
        return wanted.every((word) => text.includes(word));
    });
}

/** A panel with a searchable list of options. */
export function Picker({ title, options, onChoose, onClose }: Props): JSX.Element {
    const { t } = usePage().language;
    const [typed, setTyped] = useState('');
    const found = useMemo(() => matching(options, typed), [options, typed]);
    return (
        <Panel title={title} onClose={onClose}>
            <Field row="search" label={t('section.search')} text={typed} onEdit={setTyped} />
            <p class="about" role="status">
                {found.length === 0 ? t('nothingFound') : t('found', { count: `${found.length}` })}
            </p>
            {found.map(({ value, words }) => (
                <Row
                    key={value}
                    kind="acts"
                    row={value}
                    name={words}
                    onUse={() => {
                        onChoose(value);
                    }}
                />
            ))}
        </Panel>
    );
}
