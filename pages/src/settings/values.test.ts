import { expect, test } from 'vitest';

import { localesOf, pairOf } from './values';

test('the locales are the texts of an array', () => {
    expect(localesOf('["fr-FR", "", 5, "en-US"]')).toEqual(['fr-FR', 'en-US']);
    for (const value of ['', 'fr-FR', '{}', '"fr-FR"', undefined]) {
        expect(localesOf(value)).toEqual([]);
    }
});

test('a pair is an array of at most two texts', () => {
    expect(pairOf('["Phone","phone"]')).toEqual(['Phone', 'phone']);
    expect(pairOf('["Phone"]')).toEqual(['Phone', '']);
    expect(['', '[]'].map(pairOf)).toEqual(Array(2).fill(['', '']));
    expect(['[1,2]', 'Phone', 'null', '["a","b","c"]'].map(pairOf)).toEqual(Array(4).fill(null));
});
