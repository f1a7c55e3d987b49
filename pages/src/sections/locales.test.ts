import { describe, expect, it } from 'vitest';

import { movedDown, movedUp, offeredLocales, without } from './locales';

const list = ['a', 'b', 'c'];

describe('the list of locales', () => {
    it('is reordered one step at a time, not past its ends', () => {
        expect(movedUp(list, 1)).toEqual(['b', 'a', 'c']);
        expect(movedUp(list, 0)).toEqual(list);
        expect(movedDown(list, 1)).toEqual(['a', 'c', 'b']);
        expect(movedDown(list, 2)).toEqual(list);
        expect(without(list, 0)).toEqual(['b', 'c']);
        expect(list).toEqual(['a', 'b', 'c']);
    });

    it('offers canonical locales, each once', () => {
        expect(Intl.getCanonicalLocales(offeredLocales)).toEqual(offeredLocales);
    });
});
