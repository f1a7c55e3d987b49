import { expect, test } from 'vitest';

import { choicesOf, settingKeys } from '../settings/catalogue';
import { de } from './de';
import { fromLines } from './fromLines';

test('a translation is made of its texts, some of which have a name and the others a number', () => {
    const { settings, about, choices, texts } = de;
    const names = ['accepted', 'refused.stale'] as const;
    const values = settingKeys.flatMap(choicesOf).map((value) => choices[value]);
    const lines = [...settingKeys.map((key) => settings[key]), ...settingKeys.map((key) => about[key]), ...values];
    const made = fromLines([...lines, ...names.map((name) => texts[name]), 'eins', 'zwei'].join('|'), names);
    expect(made).toEqual({
        settings,
        about,
        choices,
        texts: { accepted: texts.accepted, 'refused.stale': texts['refused.stale'], 0: 'eins', 1: 'zwei' },
    });
});
