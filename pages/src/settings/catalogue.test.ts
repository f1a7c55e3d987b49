import { catalogue } from 'settings-client';
import { describe, expect, it } from 'vitest';

import { languageFor } from '../i18n/language';
import { translations } from '../i18n/translations';
import { rows, settingsOf } from '../sections/rows';
import { sections } from '../sections/Section';
import { choicesOf, defaultOf, settingKeys } from './catalogue';
import { wordsFor } from './format';

/** The catalogue itself; the pages use the part that a script made of it. */
interface Entry {
    readonly key: string;
    readonly [member: string]: unknown;
}
const [entries = []] = Object.values(
    import.meta.glob<readonly Entry[]>('../../../SettingsHandler/catalogue.json', { eager: true, import: 'settings' }),
);

describe('the catalogue of the pages', () => {
    it('has every setting of the catalogue, as it is there', () => {
        expect(settingKeys).toEqual(entries.map(({ key }) => key));
        for (const { key, number: _number, privacy: _privacy, description: _description, ...used } of entries) {
            expect(Object.entries(catalogue).find(([name]) => name === key)?.[1], key).toEqual(used);
        }
    });
});

describe.each(settingKeys)('the setting %s', (key) => {
    it('has one row in one section', () => {
        expect(sections.filter(({ id }) => settingsOf(id).includes(key)).map(({ id }) => id)).toEqual([
            rows[key].section,
        ]);
    });

    it('shows an empty value as its default', () => {
        for (const code of Object.keys(translations)) {
            const language = languageFor(code);
            expect(wordsFor(key, '', language)).toBe(wordsFor(key, defaultOf(key), language));
        }
    });

    it('shows each of its values in words', () => {
        const { choices } = languageFor('en');
        expect(choicesOf(key).map((value) => wordsFor(key, value, languageFor('en')))).toEqual(
            choicesOf(key).map((value) => choices[value]),
        );
    });
});
