import { describe, expect, it } from 'vitest';

import { translations } from '../i18n/translations';
import { columns, languageOf, languageOffers, localeOffers, middleOf, type Offer } from './offers';

/** The arrows from the middle to an offer. */
function arrowsTo(offers: readonly Offer[], row: string): number {
    const from = offers.findIndex((offer) => offer === middleOf(offers));
    const to = offers.findIndex((offer) => offer.row === row);
    return (
        Math.abs(Math.floor(to / columns) - Math.floor(from / columns)) + Math.abs((to % columns) - (from % columns))
    );
}

/** The key presses from "Add a language" to a language in the list; Enter opens and chooses. */
function pressesTo(locale: string, locales: readonly Offer[], code: string): number {
    const languages = languageOffers(locales, code);
    if (languages.some(({ row }) => row === locale)) {
        return 1 + arrowsTo(languages, locale) + 1;
    }
    const language = languageOf(locale);
    const ofLanguage = locales.filter(({ row }) => languageOf(row) === language);
    return 1 + arrowsTo(languages, language) + 1 + arrowsTo(ofLanguage, locale) + 1;
}

describe('the languages that can be added', () => {
    it('are canonical locales, each once', () => {
        const locales = localeOffers([], 'en').map(({ row }) => row);
        expect(Intl.getCanonicalLocales(locales)).toEqual(locales);
    });

    it('leave out what is set, and tell the locales of a language apart where there are several', () => {
        const locales = localeOffers(['pt-BR', 'zh-CN'], 'en');
        const languages = languageOffers(locales, 'en').map(({ name }) => name);
        expect(languages).toContain('Bulgarian');
        expect(languages).toContain('European Portuguese');
        expect(languages.filter((name) => name.includes('Chinese'))).toEqual(['Chinese']);
        expect(locales.map(({ row }) => row)).not.toContain('pt-BR');
    });

    it.each(Object.keys(translations))('are at most 12 key presses away in %s', (code) => {
        const locales = localeOffers([], code);
        const presses = locales.map(({ row }) => [pressesTo(row, locales, code), row] as const);
        const [most] = presses.sort(([one], [other]) => other - one);
        expect(most?.[0], most?.[1]).toBeLessThanOrEqual(12);
    });
});
