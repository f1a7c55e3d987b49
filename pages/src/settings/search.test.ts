import { expect, test } from 'vitest';

import { found } from './search';

const entries = [
    { name: 'Device name', words: ['Device', 'The name that this TV uses for itself.'] },
    { name: 'Colours', words: ['Captions', 'White on black, Yellow on blue', 'The colours of captions.'] },
    { name: 'Hands-free', words: ['Voice', 'On, Off', 'Talk without the remote control.'] },
    { name: 'Untertitel-Größe', words: ['Captions', 'Klein, Groß'] },
    { name: 'Name of captions', words: ['', ''] },
];

test.each([
    ['a word of the name', 'colours', ['Colours']],
    ['words of several texts, in any order', 'blue capt', ['Colours']],
    ['a word of the explanation', 'remote', ['Hands-free']],
    ['no accent, no capital', 'grosse', ['Untertitel-Größe']],
    ['words written as one, or apart', 'handsfree', ['Hands-free']],
    ['a hyphen that is not there', 'untertitel grosse', ['Untertitel-Größe']],
    ['the start of a name before any other place', 'name', ['Name of captions', 'Device name']],
    ['a value before an explanation', 'captions', ['Name of captions', 'Colours', 'Untertitel-Größe']],
    ['nothing typed', ' ', entries.map(({ name }) => name)],
    ['a word that is nowhere', 'colours xyz', []],
])('finds by %s', (_what, typed, names) => {
    expect(found(entries, typed).map(({ name }) => name)).toEqual(names);
});
