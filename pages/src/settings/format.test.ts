import type { SettingKey } from 'settings-client';
import { describe, expect, it } from 'vitest';

import { languageFor } from '../i18n/language';
import { nameOfSetting, shortened, wordsFor } from './format';

const english = languageFor('en');
describe('a value in words', () => {
    const cases: [SettingKey, string | undefined, string][] = [
        ['deviceName', 'Den', 'Den'],
        ['deviceName', '', 'TV'],
        ['deviceName', ' \u3000', '“ \u3000”'],
        ['tovanEntitlementStatus', '', 'Not set'],
        ['deviceName', undefined, 'Unknown'],
        ['deviceName', '<b>\u202Ea\u2066\n\u0000ב\u200f', '<b>\ufffda\ufffd\ufffd\ufffdב\u200f'],
        ['handsFreeEnabled', 'true', 'On'],
        ['handsFreeEnabled', 'TRUE', 'Off'],
        ['pttAlwaysOnDiscovered', 'true', 'Seen'],
        ['pttAlwaysOnDiscovered', 'false', 'Not seen yet'],
        ['pttAlwaysOnDiscovered', 'maybe', 'maybe'],
        ['pttAlwaysOnDiscovered', '', 'Not seen yet'],
        ['captionsFontSize', 'FONT_LARGE', 'Large'],
        ['captionsFontSize', 'FONT_HUGE', 'FONT_HUGE'],
        ['captionsFontSize', '', 'Medium'],
        ['captionsFontSize', 'STYLE_YELLOW_ON_BLUE', 'STYLE_YELLOW_ON_BLUE'],
        ['deviceName', 'FONT_LARGE', 'FONT_LARGE'],
        ['captionsStyles', 'toString', 'toString'],
        ['orliaLocale', '["fr-FR","en-US"]', 'French (France), American English'],
        ['orliaLocale', 'broken', 'broken'],
        ['companionDevice', '["Phone","phone"]', 'Phone · phone'],
        ['companionDevice', '["",""]', 'Not set'],
        ['companionDevice', '["  ",""]', 'Not set'],
        ['companionDevice', '', 'Not set'],
        ['companionDevice', '["a","b","c"]', '["a","b","c"]'],
        ['companionDevice', 'null', 'null'],
    ];
    it.each(cases)('%s %s', (key, value, words) => {
        expect(wordsFor(key, value, english)).toBe(words);
    });

    it('is cut where it is longer than a line, never inside a character', () => {
        expect(shortened('😀'.repeat(80))).toBe('😀'.repeat(80));
        expect(shortened('😀'.repeat(81))).toBe(`${'😀'.repeat(80)}…`);
        expect(shortened('x'.repeat(60_000))).toBe(`${'x'.repeat(80)}…`);
    });
});

describe('the name of a setting', () => {
    it('is translated; a key that the catalogue does not have is shown itself', () => {
        expect(nameOfSetting('timezone', english)).toBe('Time zone');
        expect(nameOfSetting('title', english)).toBe('title');
        expect(nameOfSetting('somethingElse', english)).toBe('somethingElse');
    });
});
