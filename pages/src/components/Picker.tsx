import type { JSX } from 'preact';
import { useMemo, useState } from 'preact/hooks';

import { found, type Entry } from '../settings/search';
import { usePage } from './context';
import { Count } from './Count';
import { Field } from './Field';
import { Panel } from './Panel';
import { Row } from './Row';

interface Option extends Entry {
    readonly value: string;
}

interface Props {
    readonly title: string;
    readonly options: readonly Option[];
    readonly onChoose: (value: string) => void;
    readonly onClose: () => void;
}

/** A panel with a searchable list of options. */
export function Picker({ title, options, onChoose, onClose }: Props): JSX.Element {
    const { t } = usePage().language;
    const [typed, setTyped] = useState('');
    const results = useMemo(() => found(options, typed), [options, typed]);
    return (
        <Panel title={title} onClose={onClose}>
            <Field row="search" label={t('section.search')} text={typed} onEdit={setTyped} />
            <Count of={results.length} />
            {results.map(({ value, name }) => (
                <Row
                    key={value}
                    kind="acts"
                    row={value}
                    name={name}
                    onUse={() => {
                        onChoose(value);
                    }}
                />
            ))}
        </Panel>
    );
}
