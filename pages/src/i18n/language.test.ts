import { describe, expect, it } from 'vitest';

import { en, type MessageKey } from './en';
import { catalogues, languageFor, localesOf, nameOfLocale } from './language';

const keys = Object.keys(en) as MessageKey[];

function places(text: string): string[] {
    return [...text.matchAll(/\{\w+\}/g)].map(([place]) => place).sort();
}

describe.each(Object.entries(catalogues))('the catalogue %s', (code, catalogue) => {
    it('says everything that the English one says, and nothing else', () => {
        expect(Object.keys(catalogue).sort()).toEqual([...keys].sort());
    });

    it('has no empty text and fills in the same places', () => {
        for (const key of keys) {
            expect(catalogue[key].trim(), key).not.toBe('');
            expect(places(catalogue[key]), key).toEqual(places(en[key]));
        }
    });

    it('is translated', () => {
        const same = keys.filter((key) => catalogue[key] === en[key]);
        // A word such as "Captions" may be the same in two languages, a sentence may not.
        expect(code === 'en' ? [] : same.filter((key) => en[key].length > 12)).toEqual([]);
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

    it('is written from right to left in Arabic alone', () => {
        expect(Object.keys(catalogues).map((code) => languageFor(code).direction)).toEqual([
            ...Array<string>(5).fill('ltr'),
            'rtl',
        ]);
    });

    it('fills texts in as they are', () => {
        const { t } = languageFor('en-US');
        expect(t('changed', { name: '$& {value}', value: '<b>' })).toBe('$& {value} is now <b>');
        expect(t('edit')).toBe('Change {name}');
    });
});

describe('locales', () => {
    it('are read from the text of a list', () => {
        expect(localesOf('["fr-FR", "", 5, "en-US"]')).toEqual(['fr-FR', 'en-US']);
        for (const text of ['', 'fr-FR', '{}', '"fr-FR"', undefined]) {
            expect(localesOf(text)).toEqual([]);
        }
    });

    it('have names in the language of the pages, or their code', () => {
        expect(nameOfLocale('fr-CA', 'en')).toBe('Canadian French');
        expect(nameOfLocale('de_DE', 'fr')).toBe('allemand (Allemagne)');
        expect(nameOfLocale('no locale at all', 'en')).toBe('no locale at all');
    });
});
