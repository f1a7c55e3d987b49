import { describe, expect, it } from 'vitest';

import { carried, movedTo, pickedUp, rowNames, without } from './locales';

const list = ['a', 'b', 'c'];

describe('the list of locales', () => {
    it('is reordered, not past its ends', () => {
        expect(movedTo(list, 2, 0)).toEqual(['c', 'a', 'b']);
        expect(movedTo(list, 0, 1)).toEqual(['b', 'a', 'c']);
        expect(movedTo(list, 0, 9)).toEqual(['b', 'c', 'a']);
        expect(movedTo(list, 1, -1)).toEqual(['b', 'a', 'c']);
        expect(without(list, 0)).toEqual(['b', 'c']);
        expect(list).toEqual(['a', 'b', 'c']);
    });

    it('has a row for each locale, though one is there twice', () => {
        expect(rowNames(['a', 'b', 'a'])).toEqual(['a', 'b', 'a 2']);
    });
});

describe('a locale that was picked up', () => {
    it('is carried step by step, and its row with it', () => {
        const top = carried(carried(pickedUp(['a', 'b', 'a'], 2), -1), -1);
        expect(top.locales).toEqual(['a', 'a', 'b']);
        expect(top.rows).toEqual(['a 2', 'a', 'b']);
        expect(top.index).toBe(0);
    });

    it('stays at the ends of the list', () => {
        expect(carried(pickedUp(list, 0), -1).locales).toEqual(list);
        expect(carried(pickedUp(list, 2), 1).locales).toEqual(list);
    });
});
