import type { JSX } from 'preact';
import { useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { Explanation } from '../components/Explanation';
import type { RowProps } from '../components/RowProps';
import { RowStatus } from '../components/RowStatus';
import { Tool } from '../components/Tool';
import { isTranslated, nameOfLocale } from '../i18n/language';
import { nameOfSetting, shortened } from '../settings/format';
import { localesOf } from '../settings/values';
import { AddLocale } from './AddLocale';
import { LanguageQuestion } from './LanguageQuestion';
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
            <Tool tool="undo" words={language.t('undo')} onUse={list.undo} />
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
            <Hint list={list} />
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

/** Says what the keys do now. */
function Hint({ list }: { readonly list: Locales }): JSX.Element {
    const { t, code } = usePage().language;
    const primary = list.locales[0];
    const nameOf = (locale = '') => shortened(nameOfLocale(locale, code));
    const words = () => {
        if (list.pickedUp !== null) {
            const { locales, index } = list.pickedUp;
            const values = { name: nameOf(locales[index]), position: `${index + 1}`, count: `${locales.length}` };
            return t('locale.carry', values);
        }
        if (list.canUndo) {
            return t('locale.undo');
        }
        return primary === undefined || isTranslated(primary)
            ? ''
            : t('locale.untranslated', { name: nameOf(primary) });
    };
    return (
        <p class="about" role="status">
            {words()}
        </p>
    );
}
