import { expect, test } from 'vitest';

import { de } from './de';
import { en } from './en';
import { fromList } from './fromList';

test('a translation is made of its texts in the order of the English ones', () => {
    const groups = ['settings', 'about', 'choices', 'texts'] as const;
    const list = groups.flatMap((group) =>
        Object.keys(en[group]).map((key) => new Map(Object.entries(de[group])).get(key) ?? ''),
    );
    expect(Object.keys(en)).toEqual(groups);
    expect(fromList(list)).toEqual(de);
});
