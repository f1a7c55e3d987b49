import type { JSX } from 'preact';
import { useMemo, useState } from 'preact/hooks';

import { shortened, usePage } from '../settings/format';
import { Picker } from '../components/Picker';
import { RowStatus } from '../components/RowStatus';
import { localesOf, nameOfLocale } from '../i18n/language';
import { movedDown, movedUp, offeredLocales, without } from './locales';

const setting = 'orliaLocale';

/** The assistant's locales, the primary one first. */
export function LocaleList(): JSX.Element {
    const { store, state, language } = usePage();
    const { t, code } = language;
    const [adding, setAdding] = useState(false);
    const locales = localesOf(state.values?.[setting]);
    const set = (list: readonly string[]) => void store.set(setting, JSON.stringify(list));
    const options = useMemo(
        () =>
            offeredLocales
                .map((value) => ({ value, words: nameOfLocale(value, code) }))
                .sort((left, right) => left.words.localeCompare(right.words, code)),
        [code],
    );
    return (
        <div role="group" aria-label={t('orliaLocale')}>
            <h3>{t('orliaLocale')}</h3>
            <p class="about">{t('orliaLocale.about')}</p>
            <ol class="locales">
                {locales.map((locale, place) => {
                    const name = shortened(nameOfLocale(locale, code));
                    // A name of its own for each row, though a locale may be there twice.
                    const row = locales.indexOf(locale) === place ? locale : `${locale} ${place}`;
                    return (
                        <li key={row} class="locale" data-row={row}>
                            <span
                                class="name"
                                tabIndex={0}
                                role="group"
                                aria-label={place === 0 ? `${name}, ${t('locale.primary')}` : name}
                            >
                                <bdi>{name}</bdi>
                                {place === 0 && <span class="badge">{t('locale.primary')}</span>}
                            </span>
                            <span class="tools">
                                <button
                                    type="button"
                                    class="tool"
                                    data-tool="up"
                                    aria-label={t('locale.up', { name })}
                                    disabled={place === 0}
                                    onClick={() => {
                                        set(movedUp(locales, place));
                                    }}
                                >
                                    ▲
                                </button>
                                <button
                                    type="button"
                                    class="tool"
                                    data-tool="down"
                                    aria-label={t('locale.down', { name })}
                                    disabled={place === locales.length - 1}
                                    onClick={() => {
                                        set(movedDown(locales, place));
                                    }}
                                >
                                    ▼
                                </button>
                                <button
                                    type="button"
                                    class="tool"
                                    data-tool="remove"
                                    aria-label={t('locale.remove', { name })}
                                    disabled={locales.length === 1}
                                    onClick={() => {
                                        set(without(locales, place));
                                    }}
                                >
                                    ✕
                                </button>
                            </span>
                        </li>
                    );
                })}
            </ol>
            {locales.length === 1 && <p class="about">{t('locale.last')}</p>}
            <RowStatus setting={setting} />
            <div class="row" data-row="add">
                <button
                    type="button"
                    class="control"
                    aria-haspopup="dialog"
                    onClick={() => {
                        setAdding(true);
                    }}
                >
                    <span class="name">
                        <span aria-hidden="true">＋ </span>
                        {t('locale.add')}
                    </span>
                </button>
            </div>
            {adding && (
                <Picker
                    title={t('locale.add')}
                    options={options.filter(({ value }) => !locales.includes(value))}
                    onClose={() => {
                        setAdding(false);
                    }}
                    onChoose={(locale) => {
                        setAdding(false);
                        set([...locales, locale]);
                    }}
                />
            )}
        </div>
    );
}
