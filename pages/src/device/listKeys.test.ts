import { expect, test } from 'vitest';

import type { Exchange } from './exchanges';
import { keyAction } from './listKeys';
import { messageOf } from './message.fixture';

const exchanges: readonly Exchange[] = ['one', 'two', 'three'].map((text) => ({
    first: messageOf(text),
    answers: [],
    missing: '',
}));

/** What a key chooses after the exchange `at`, as a place in the list; undefined when it chooses nothing. */
function choose(key: string, at: number | null): number | undefined {
    const action = keyAction(key, exchanges, { chosen: exchanges[at ?? -1] ?? null, showsFrame: false });
    return action?.chosen ? exchanges.indexOf(action.chosen) : undefined;
}

test('the first arrow chooses the newest', () => {
    expect([choose('ArrowUp', null), choose('ArrowDown', null)]).toEqual([2, 2]);
});

test('arrows move by one, and leave the list at its ends', () => {
    expect([choose('ArrowUp', 2), choose('ArrowUp', 0), choose('ArrowDown', 0), choose('ArrowDown', 2)]).toEqual([
        1,
        undefined,
        1,
        undefined,
    ]);
});

test('Home and End go to the ends', () => {
    expect([choose('Home', 1), choose('End', null)]).toEqual([0, 2]);
});

test('Enter shows the frames of the chosen, or else of the newest', () => {
    const [first] = exchanges;
    expect(keyAction('Enter', exchanges, { chosen: first ?? null, showsFrame: false })).toEqual({
        chosen: first,
        showsFrame: true,
    });
    expect(keyAction('Enter', exchanges, { chosen: null, showsFrame: false })?.chosen).toBe(exchanges[2]);
    expect(keyAction('Enter', exchanges, { chosen: null, showsFrame: true })).toBeNull();
});

test.each(['Escape', 'GoBack'])('%s closes the frames, then clears the choice; then the page handles it', (key) => {
    const chosen = exchanges[1] ?? null;
    expect(keyAction(key, exchanges, { chosen, showsFrame: true })).toEqual({ showsFrame: false });
    expect(keyAction(key, exchanges, { chosen, showsFrame: false })).toEqual({ chosen: null });
    expect(keyAction(key, exchanges, { chosen: null, showsFrame: false })).toBeNull();
});

test('the list ignores other keys, and all keys when it is empty', () => {
    expect(keyAction('a', exchanges, { chosen: null, showsFrame: false })).toBeNull();
    for (const key of ['ArrowUp', 'ArrowDown', 'Home', 'End', 'Enter']) {
        expect(keyAction(key, [], { chosen: null, showsFrame: false })).toBeNull();
    }
});
