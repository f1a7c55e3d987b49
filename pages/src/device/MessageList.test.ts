import { expect, test } from 'vitest';

import { nextChoice } from './MessageList';
import type { Message } from './messages';

const messages: readonly Message[] = [1, 2, 3].map((serial) => ({
    serial,
    timestamp: serial,
    direction: 'in',
    listener: 'page',
    client: 1,
    kind: 'other',
    text: '',
}));

function choose(key: string, chosen: number | null): number | null | undefined {
    const message = messages.find(({ serial }) => serial === chosen) ?? null;
    const next = nextChoice(key, messages, message);
    return next === null || next === undefined ? next : next.serial;
}

test('the first arrow chooses the newest message', () => {
    expect([choose('ArrowUp', null), choose('ArrowDown', null)]).toEqual([3, 3]);
});

test('arrows move by one, and leave the list at its ends', () => {
    expect([choose('ArrowUp', 3), choose('ArrowUp', 1), choose('ArrowDown', 1), choose('ArrowDown', 3)]).toEqual([
        2,
        undefined,
        2,
        undefined,
    ]);
});

test('Home and End go to the ends', () => {
    expect([choose('Home', 2), choose('End', null)]).toEqual([1, 3]);
});

test('Escape clears the choice; without a choice the page handles it', () => {
    expect([choose('Escape', 2), choose('Escape', null)]).toEqual([null, undefined]);
});

test('the list ignores other keys, and arrows when it is empty', () => {
    expect(choose('a', 2)).toBeUndefined();
    expect(nextChoice('ArrowUp', [], null)).toBeUndefined();
});
