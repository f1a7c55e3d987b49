import type { Language } from '../i18n/language';
import { choicesOf, settingKeys } from '../settings/catalogue';
import { nameOfSetting } from '../settings/format';
import type { Entry } from '../settings/search';
import { rows, type SectionId } from './rows';

/** A row that a search leads to. */
export interface RowEntry extends Entry {
    readonly section: SectionId;
    readonly row: string;
}

/** Every setting, and what else the sections have. */
export function searchEntries(language: Language): readonly RowEntry[] {
    const { t, choices, about } = language;
    const settings = settingKeys.map((key) => {
        const { section } = rows[key];
        const values = choicesOf(key).map((value) => choices[value]);
        return {
            section,
            row: key,
            name: nameOfSetting(key, language),
            words: [t(`section.${section}`), values.join(', '), about[key]],
        };
    });
    const others = [
        { section: 'account', row: 'selected', name: t('selected.name'), about: '' },
        { section: 'account', row: 'open-settings', name: t('action.openSettings'), about: '' },
        { section: 'account', row: 'log-out', name: t('action.logOut'), about: t('logOut.erases') },
        { section: 'about', row: 'health', name: t('about.health'), about: '' },
        { section: 'about', row: 'version', name: t('about.host'), about: t('about.version', { version: '' }) },
        { section: 'about', row: 'address', name: t('about.address'), about: '' },
    ] as const;
    return [
        ...settings,
        ...others.map(({ section, row, name, about: words }) => ({
            section,
            row,
            name,
            words: [t(`section.${section}`), words],
        })),
    ];
}
