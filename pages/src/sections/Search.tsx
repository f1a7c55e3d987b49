import type { JSX } from 'preact';
import { useMemo, useState } from 'preact/hooks';
import { isSetting } from 'settings-client';

import { usePage } from '../components/context';
import { Count } from '../components/Count';
import { Field } from '../components/Field';
import { Row } from '../components/Row';
import { focusOn } from '../focus/navigation';
import { wordsFor } from '../settings/format';
import { found } from '../settings/search';
import { searchEntries, type RowEntry } from './searchEntries';

/** Finds settings by their names, values and explanations. */
export function Search(): JSX.Element {
    const { store, language } = usePage();
    const { t } = language;
    const [typed, setTyped] = useState(store.searched);
    const entries = useMemo(() => searchEntries(language), [language]);
    const results = found(entries, typed);
    return (
        <div
            class="search"
            onKeyDown={(event) => {
                if (event.key === 'Enter' && event.target instanceof HTMLInputElement) {
                    // Otherwise the result would be used at once.
                    event.preventDefault();
                    focusOn(event.currentTarget.querySelector('button') ?? undefined);
                }
            }}
        >
            <Field
                row="search-field"
                label={t('section.search')}
                text={typed}
                onEdit={(text) => {
                    store.searched = text;
                    setTyped(text);
                }}
            />
            <Count of={results.length} />
            {results.map((entry) => (
                <Result key={entry.row} entry={entry} />
            ))}
        </div>
    );
}

/** Leads to the row that was found. */
function Result({ entry }: { readonly entry: RowEntry }): JSX.Element {
    const { state, language, goTo } = usePage();
    const { section, row, name, words } = entry;
    const value = isSetting(row) ? wordsFor(row, state.values?.[row], language) : '';
    const explanation = words.slice(1).join(' ').trim();
    return (
        <Row
            kind="opens"
            icon={section}
            row={`to-${row}`}
            name={name}
            value={value}
            explanation={
                <>
                    <p>{language.t(`section.${section}`)}</p>
                    {explanation !== '' && <p>{explanation}</p>}
                </>
            }
            onUse={() => {
                goTo(section, row);
            }}
        />
    );
}
