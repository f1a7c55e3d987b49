import { expect, test } from 'vitest';

import { everything, filterMessages, type Filter } from './filter';
import type { Message } from './messages';

const messages: readonly Message[] = [
    {
        serial: 1,
        timestamp: 1,
        direction: 'in',
        listener: 'page',
        client: 1,
        kind: 'SetSettings',
        text: 'deviceName Attic',
    },
    {
        serial: 2,
        timestamp: 2,
        direction: 'out',
        listener: 'all',
        client: null,
        kind: 'event',
        text: 'deviceName Attic',
    },
    { serial: 3, timestamp: 3, direction: 'in', listener: 'socket', client: 2, kind: 'GetSettings', text: 'timezone' },
    { serial: 4, timestamp: 4, direction: 'in', listener: 'device', client: 3, kind: 'command', text: 'captions' },
];

function serials(filter: Partial<Filter>): number[] {
    return filterMessages(messages, { ...everything, ...filter }).map(({ serial }) => serial);
}

test('an empty filter matches everything, in order', () => {
    expect(serials({})).toEqual([1, 2, 3, 4]);
});

test('each part of the filter works alone', () => {
    expect(serials({ text: 'ATTIC' })).toEqual([1, 2]);
    expect(serials({ direction: 'in' })).toEqual([1, 3, 4]);
    expect(serials({ kind: 'command' })).toEqual([4]);
});

test('a frame to all matches every listener but the device', () => {
    expect(serials({ listener: 'page' })).toEqual([1, 2]);
    expect(serials({ listener: 'socket' })).toEqual([2, 3]);
    expect(serials({ listener: 'device' })).toEqual([4]);
    expect(serials({ listener: 'all' })).toEqual([2]);
});

test('the parts work together', () => {
    expect(serials({ text: 'name', direction: 'out', listener: 'socket', kind: 'event' })).toEqual([2]);
    expect(serials({ text: 'name', direction: 'out', listener: 'device' })).toEqual([]);
});

test('the text is not a pattern', () => {
    expect(serials({ text: '.' })).toEqual([]);
});
