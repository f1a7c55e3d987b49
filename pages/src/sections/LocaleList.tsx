import type { JSX } from 'preact';
import { useMemo } from 'preact/hooks';

import { ActionRow } from '../components/ActionRow';
import { usePage } from '../components/context';
import { Picker } from '../components/Picker';
import type { RowProps } from '../components/RowProps';
import { RowStatus } from '../components/RowStatus';
import { useDialog } from '../components/useDialog';
import { Icon } from '../icons';
import { nameOfLocale } from '../i18n/language';
import { nameOfSetting, shortened } from '../settings/format';
import { localesOf } from '../settings/values';
import { movedDown, movedUp, offeredLocales, without } from './locales';

type SetLocales = (locales: readonly string[]) => void;

/** The assistant's locales, the primary one first. */
export function LocaleList({ setting, about }: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const name = nameOfSetting(setting, language);
    const locales = localesOf(state.values?.[setting]);
    const set: SetLocales = (list) => void store.set(setting, JSON.stringify(list));
    return (
        <div role="group" aria-label={name}>
            <h3>{name}</h3>
            <p class="about">{about}</p>
            <ol class="locales">
                {locales.map((locale, index) => {
                    // Unique, though a locale may be there twice.
                    const row = locales.indexOf(locale) === index ? locale : `${locale} ${index}`;
                    return <LocaleItem key={row} row={row} locales={locales} index={index} set={set} />;
                })}
            </ol>
            {locales.length === 1 && <p class="about">{language.t('locale.last')}</p>}
            <RowStatus setting={setting} />
            <AddLocale locales={locales} set={set} />
        </div>
    );
}

interface ItemProps {
    readonly row: string;
    readonly locales: readonly string[];
    readonly index: number;
    readonly set: SetLocales;
}

function LocaleItem({ row, locales, index, set }: ItemProps): JSX.Element {
    const { t, code } = usePage().language;
    const name = shortened(nameOfLocale(locales[index] ?? '', code));
    const isPrimary = index === 0;
    const tools = [
        { tool: 'up', icon: 'up', isDisabled: isPrimary, change: movedUp },
        { tool: 'down', icon: 'down', isDisabled: index === locales.length - 1, change: movedDown },
        { tool: 'remove', icon: 'remove', isDisabled: locales.length === 1, change: without },
    ] as const;
    return (
        <li class="locale" data-row={row}>
            <span
                class="name"
                tabIndex={0}
                role="group"
                aria-label={isPrimary ? `${name}, ${t('locale.primary')}` : name}
            >
                <bdi>{name}</bdi>
                {isPrimary && <span class="badge">{t('locale.primary')}</span>}
            </span>
            <span class="tools">
                {tools.map(({ tool, icon, isDisabled, change }) => (
                    <button
                        key={tool}
                        type="button"
                        class="tool"
                        data-tool={tool}
                        aria-label={t(`locale.${tool}`, { name })}
                        disabled={isDisabled}
                        onClick={() => {
                            set(change(locales, index));
                        }}
                    >
                        <Icon name={icon} />
                    </button>
                ))}
            </span>
        </li>
    );
}

function AddLocale({ locales, set }: Pick<ItemProps, 'locales' | 'set'>): JSX.Element {
    const { t, code } = usePage().language;
    const dialog = useDialog();
    const options = useMemo(
        () =>
            offeredLocales
                .map((value) => ({ value, words: nameOfLocale(value, code) }))
                .sort((left, right) => left.words.localeCompare(right.words, code)),
        [code],
    );
    return (
        <>
            <ActionRow row="add" name={t('locale.add')} icon="add" opensDialog onUse={dialog.open} />
            {dialog.isOpen && (
                <Picker
                    title={t('locale.add')}
                    options={options.filter(({ value }) => !locales.includes(value))}
                    onClose={dialog.close}
                    onChoose={(locale) => {
                        dialog.close();
                        set([...locales, locale]);
                    }}
                />
            )}
        </>
    );
}
