import { expect, test } from 'vitest';

import { exchangesOf } from './exchanges';
import { filterExchanges, filterOf, fragmentOf, type Filter } from './filter';
import { messageOf, sentByHost } from './message.fixture';

const everything = filterOf('');
const all = { listener: 'all', client: null } as const;
const payload = { settingDBId: 'deviceName', from: 'Den', to: 'Attic' };

const exchanges = exchangesOf({
    messages: [
        messageOf({ type: 24, messageId: 'm', answer: true, payload }, { listener: 'page', name: 'a page' }),
        sentByHost({ type: 25, origin: 'page', client: 'a page', payload }, all),
        sentByHost({ type: 24, messageId: 'm', payload: { outcome: 'changed' } }, { listener: 'page', name: 'a page' }),
        messageOf({ type: 7, messageId: 'n', payload: { settings: ['timezone'] } }, { client: 2 }),
        messageOf({ command: 'captions', enabled: true }, { listener: 'device', client: 3 }),
        sentByHost({ notice: { reread: ['captionsEnabled'] } }, all),
    ],
    time: 0,
    link: 1,
});
const words = [
    'Set deviceName to Attic',
    'deviceName: Den → Attic, by a page',
    'Read timezone',
    'captions on',
    'Read again: captionsEnabled',
];

/** Which of `words` match. */
function matching(filter: Partial<Filter>): number[] {
    return filterExchanges(exchanges, { ...everything, ...filter }).map(({ first }) => words.indexOf(first.words));
}

test('an empty filter matches everything, in order', () => {
    expect(matching({})).toEqual([0, 1, 2, 3, 4]);
});

test('the text is found in words and frames, in any case, and is not a pattern', () => {
    expect(matching({ text: 'READ AGAIN' })).toEqual([4]);
    expect(matching({ text: '"reread"' })).toEqual([4]);
    expect(matching({ text: '.' })).toEqual([]);
});

test('a setting is found in requests, answers, events and notices, by its whole name', () => {
    expect(matching({ setting: 'deviceName' })).toEqual([0, 1]);
    expect(matching({ setting: 'timezone' })).toEqual([2]);
    expect(matching({ setting: 'captionsEnabled' })).toEqual([4]);
    expect(matching({ setting: 'device' })).toEqual([]);
});

test('a type is that of the request or of an answer', () => {
    expect(matching({ type: 'SetSettings' })).toEqual([0]);
    expect(matching({ type: 'event' })).toEqual([1]);
});

test('a client is found by its name or its connection, with the events that it caused', () => {
    expect(matching({ client: 'a page' })).toEqual([0, 1]);
    expect(matching({ client: 'socket-2' })).toEqual([2]);
});

test('a frame to all is found under every listener but the device', () => {
    expect(matching({ client: 'page' })).toEqual([0, 1, 4]);
    expect(matching({ client: 'socket' })).toEqual([1, 2, 4]);
    expect(matching({ client: 'device' })).toEqual([3]);
});

test('the parts work together', () => {
    expect(matching({ text: 'attic', setting: 'deviceName', type: 'event', client: 'a page' })).toEqual([1]);
});

test('the address keeps the filter', () => {
    const filter: Filter = { text: 'a & b=#', setting: 'deviceName', type: 'event', client: 'settings page (Android)' };
    expect(filterOf(fragmentOf(filter))).toEqual(filter);
    expect(fragmentOf({ ...everything, type: 'batch' })).toBe('#type=batch');
    expect(fragmentOf(everything)).toBe('');
    expect(filterOf('#type=nonsense&more=1')).toEqual(everything);
});
