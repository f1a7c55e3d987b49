import { describe, expect, it } from 'vitest';

import { translations } from '../i18n/translations';
import { indexOf, search } from './search';
import { regionsIn } from './testData';

const codes = Object.keys(translations);

function indexIn(code: string) {
    const languages = [code, ...codes.filter((other) => other !== code)];
    return indexOf(languages.map((language) => ({ code: language, regions: regionsIn(language) })));
}

const inEnglish = indexIn('en');
const inJapanese = indexIn('ja');

function found(typed: string, index = inEnglish): string[] {
    return search(index, typed).map(({ city }) => city);
}

describe('the search for a time zone', () => {
    it.each([
        ['kolkata', 'Kolkata'],
        ['kyiv', 'Kyiv'],
        ['germany', 'Berlin'],
        ['東京', 'Tokyo'],
        ['new york', 'New York'],
        ['  são PAULO ', 'São Paulo'],
        ['sao paulo', 'São Paulo'],
        ['st. john', 'St. John’s'],
        ['hawaii', 'Honolulu'],
    ])('finds what people mean by “%s”', (typed, city) => {
        expect(found(typed)[0]).toBe(city);
    });

    it.each([
        ['calcutta', 'Kolkata'],
        ['saigon', 'Ho Chi Minh City'],
        ['Europe/Kiev', 'Kyiv'],
        ['rangoon', 'Yangon'],
        ['montreal', 'Toronto'],
        ['us/pacific', 'Los Angeles'],
    ])('finds a city by an older name: “%s”', (typed, city) => {
        expect(found(typed)).toContain(city);
    });

    it.each([
        ['Moskau', 'Moscow'],
        ['Londres', 'London'],
        ['القاهرة', 'Cairo'],
        ['قاهره', 'Cairo'],
        ['ろんどん', 'London'],
        ['Allemagne', 'Berlin'],
        ['ألمانيا', 'Berlin'],
        ['インド', 'Kolkata'],
    ])('knows the names in all six languages, whatever the language of the page: “%s”', (typed, city) => {
        expect(found(typed)[0]).toBe(city);
    });

    it('answers in the language of the page', () => {
        expect(found('tokyo', inJapanese)[0]).toBe('東京');
        expect(found('germany', inJapanese)[0]).toBe('ベルリン');
    });

    it('takes the beginnings of words, and countries before older names', () => {
        expect(found('uk')[0]).toBe('London');
        expect(found('uk')).toContain('Kyiv');
        expect(found('uk')).not.toContain('Chuuk');
        expect(found('truk')).toEqual(['Chuuk']);
    });

    it('finds cities of a country by both names', () => {
        expect(found('mexico tij')).toEqual(['Tijuana']);
        expect(found('tij mexico')).toEqual(['Tijuana']);
    });

    it('finds a city before a country that begins with the same letters', () => {
        const [first, second] = [found('mar').indexOf('Martinique'), found('mar').indexOf('Majuro')];
        expect(first).toBeGreaterThanOrEqual(0);
        expect(second).toBeGreaterThan(first);
    });

    it('finds nothing without a word, or by a word that no name has', () => {
        expect(found('  ?! ')).toEqual([]);
        expect(found('xyzzy')).toEqual([]);
    });
});
