import { describe, expect, it } from 'vitest';

import { en } from './en';
import { isTranslated, languageFor, nameOfLocale } from './language';
import { translations } from './translations';

/** Every text of a translation by its name; the types see to it that each translation has the same names. */
function textsOf({ settings, about, choices, texts }: typeof en): Map<string, string> {
    const explanations = Object.entries(about).map(([key, text]) => [`what ${key} is`, text] as const);
    return new Map([...Object.entries({ ...settings, ...choices, ...texts }), ...explanations]);
}

const english = textsOf(en);

function placeholders(text: string): string[] {
    return [...text.matchAll(/\{\w+\}/g)].map(([placeholder]) => placeholder).sort();
}

describe.each(Object.entries(translations))('the translation %s', (code, translation) => {
    it('has no empty text, and the placeholders of the English one', () => {
        for (const [name, text] of textsOf(translation)) {
            expect(text.trim(), name).not.toBe('');
            expect(placeholders(text), name).toEqual(placeholders(english.get(name) ?? ''));
        }
    });

    it('is translated', () => {
        const same = [...textsOf(translation)].filter(([name, text]) => text === english.get(name));
        // A word such as "Captions" may be the same in two languages, a sentence may not.
        expect(code === 'en' ? [] : same.filter(([, text]) => text.replace(/\{\w+\}/g, '').length > 12)).toEqual([]);
        expect(code === 'en' ? 0 : same.length).toBeLessThan(8);
    });
});

describe('the language of the pages', () => {
    it('follows the primary locale of the assistant', () => {
        const codes = ['fr-CA', 'es-MX', 'de_AT', 'JA-jp', 'ar', 'pt-BR', 'constructor', '', undefined].map(
            (locale) => languageFor(locale).code,
        );
        expect(codes).toEqual(['fr', 'es', 'de', 'ja', 'ar', 'en', 'en', 'en', 'en']);
    });

    it('is another one where there is no translation', () => {
        expect(['fr-CA', 'JA-jp', 'it-IT', 'constructor', ''].map(isTranslated)).toEqual([
            true,
            true,
            false,
            false,
            false,
        ]);
    });

    it('is written from right to left only in Arabic', () => {
        expect(Object.keys(translations).map((code) => languageFor(code).direction)).toEqual([
            ...Array<string>(5).fill('ltr'),
            'rtl',
        ]);
    });

    it('fills in placeholders without interpreting the values', () => {
        const { t } = languageFor('en-US');
        expect(t('setTo', { name: '$& {value}', value: '<b>', who: 'x' })).toBe('$& {value} set to <b> by x');
        expect(t('edit.title')).toBe('Change {name}');
    });
});

describe('the name of a locale', () => {
    it('is in the language of the pages, or the locale itself', () => {
        expect(nameOfLocale('fr-CA', 'en')).toBe('Canadian French');
        expect(nameOfLocale('de_DE', 'fr')).toBe('allemand (Allemagne)');
        expect(nameOfLocale('no locale at all', 'en')).toBe('no locale at all');
    });
});
