import type { JSX } from 'preact';
import { useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { Explanation } from '../components/Explanation';
import type { RowProps } from '../components/RowProps';
import { RowStatus } from '../components/RowStatus';
import { Tool } from '../components/Tool';
import { nameOfSetting } from '../settings/format';
import { localesOf } from '../settings/values';
import { AddLocale } from './AddLocale';
import { LanguageQuestion } from './LanguageQuestion';
import { LocaleHint } from './LocaleHint';
import { rowNames } from './locales';
import { LocaleRow } from './LocaleRow';
import { useLocales, type Locales } from './useLocales';

function rowOf(target: EventTarget | null): string | undefined {
    return target instanceof Element ? target.closest<HTMLElement>('[data-row]')?.dataset['row'] : undefined;
}

/** The assistant's languages, the primary one first. */
export function LocaleList(props: RowProps): JSX.Element {
    const { language } = usePage();
    const list = useLocales(props.setting);
    const [focused, setFocused] = useState<string | undefined>();
    const name = nameOfSetting(props.setting, language);
    const explanation = <Explanation {...props} />;
    const undo =
        list.canUndo && focused === 'add' ? (
            <Tool tool="undo" words={language.t('change.undo')} onUse={list.undo} />
        ) : undefined;
    const { locales, rows } = list.pickedUp ?? { locales: list.locales, rows: rowNames(list.locales) };
    return (
        <div
            role="group"
            aria-label={name}
            onFocusIn={({ target }) => {
                setFocused(rowOf(target));
            }}
            onKeyDown={(event) => {
                carryByArrow(event, list);
            }}
        >
            <h3>{name}</h3>
            <ol class="locales">
                {rows.map((row, index) => (
                    <LocaleRow
                        key={row}
                        row={row}
                        locale={locales[index] ?? ''}
                        index={index}
                        list={list}
                        hasUndo={list.canUndo && focused === row}
                        explanation={explanation}
                    />
                ))}
            </ol>
            <AddLocale list={list} tools={undo} explanation={explanation} />
            <RowStatus setting={props.setting} />
            <LocaleHint list={list} />
            {list.question !== null && (
                <LanguageQuestion locale={localesOf(list.question)[0] ?? ''} onAnswer={list.answer} />
            )}
        </div>
    );
}

/** A language that was picked up moves with up and down; other arrows do nothing. */
function carryByArrow(event: KeyboardEvent, { pickedUp, carry }: Locales): void {
    if (pickedUp !== null && event.key.startsWith('Arrow')) {
        event.preventDefault();
        if (event.key === 'ArrowUp' || event.key === 'ArrowDown') {
            carry(event.key === 'ArrowUp' ? -1 : 1);
        }
    }
}
