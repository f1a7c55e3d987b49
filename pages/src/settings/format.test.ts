import { describe, expect, it } from 'vitest';

import { languageFor } from '../i18n/language';
import { defaultOf, nameOfSetting, pairOf, shortened, wordsFor } from './format';
import { matching } from '../components/Picker';

const english = languageFor('en');
const [schema] = Object.values(
    import.meta.glob<{ readonly properties: Readonly<Record<string, { readonly default?: string }>> }>(
        '../../../docs/schemas/settings.json',
        { eager: true, import: 'default' },
    ),
);

describe('values in words', () => {
    it.each([
        ['deviceName', 'Den', 'Den'],
        ['deviceName', '', 'TV'],
        ['deviceName', ' \u3000', '“ \u3000”'],
        ['tovanEntitlementStatus', '', 'Not set'],
        ['deviceName', undefined, 'Not known'],
        ['deviceName', '<b>\u202Ea\u2066\n\u0000ב\u200f', '<b>\ufffda\ufffd\ufffd\ufffdב\u200f'],
        ['handsFreeEnabled', 'true', 'On'],
        ['handsFreeEnabled', 'TRUE', 'Off'],
        ['pttAlwaysOnDiscovered', 'false', 'Off'],
        ['pttAlwaysOnDiscovered', 'maybe', 'maybe'],
        ['pttAlwaysOnDiscovered', '', 'Off'],
        ['captionsFontSize', 'FONT_LARGE', 'Large'],
        ['captionsFontSize', 'FONT_HUGE', 'FONT_HUGE'],
        ['captionsStyles', 'toString', 'toString'],
        ['orliaLocale', '["fr-FR","en-US"]', 'French (France), American English'],
        ['orliaLocale', 'broken', 'broken'],
        ['companionDevice', '["Phone","phone"]', 'Phone · phone'],
        ['companionDevice', '["",""]', 'Not set'],
        ['companionDevice', '["  ",""]', 'Not set'],
        ['companionDevice', '', 'Not set'],
        ['companionDevice', '["a","b","c"]', '["a","b","c"]'],
        ['companionDevice', 'null', 'null'],
    ])('%s %s', (key, value, words) => {
        expect(wordsFor(key, value, english)).toBe(words);
    });

    it('are cut where they are longer than a line, never inside a character', () => {
        expect(shortened('😀'.repeat(80))).toBe('😀'.repeat(80));
        expect(shortened('😀'.repeat(81))).toBe(`${'😀'.repeat(80)}…`);
        expect(shortened('x'.repeat(60_000))).toBe(`${'x'.repeat(80)}…`);
    });

    it('have the names of their settings', () => {
        expect(nameOfSetting('timezone', english)).toBe('Time zone');
        expect(nameOfSetting('title', english)).toBe('title');
        expect(nameOfSetting('somethingElse', english)).toBe('somethingElse');
    });
});

describe('pairs', () => {
    it('are taken apart, and what is none is left alone', () => {
        expect(pairOf('["Phone","phone"]')).toEqual(['Phone', 'phone']);
        expect(pairOf('["Phone"]')).toEqual(['Phone', '']);
        expect(['', '[]'].map(pairOf)).toEqual(Array(2).fill(['', '']));
        expect(['[1,2]', 'Phone', 'null', '["a","b","c"]'].map(pairOf)).toEqual(Array(4).fill(null));
    });
});

describe('an empty value', () => {
    it('stands for the default of the catalogue', () => {
        for (const key of ['deviceName', 'friendlyName', 'companionDevice']) {
            expect(schema?.properties[key]?.default, key).toBe(defaultOf(key));
        }
    });
});

describe('searching', () => {
    const options = [
        { value: 'America/Sao_Paulo', words: 'America/Sao Paulo (GMT-3)' },
        { value: 'Europe/Paris', words: 'Europe/Paris (GMT+1)' },
        { value: 'es-ES', words: 'español (España)' },
    ];
    it.each([
        ['', ['America/Sao_Paulo', 'Europe/Paris', 'es-ES']],
        ['sao paulo', ['America/Sao_Paulo']],
        ['PARIS europe', ['Europe/Paris']],
        ['espana', ['es-ES']],
        ['gmt', ['America/Sao_Paulo', 'Europe/Paris']],
        ['nowhere', []],
    ])('%s', (typed, found) => {
        expect(matching(options, typed).map(({ value }) => value)).toEqual(found);
    });
});
