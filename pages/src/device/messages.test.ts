import { expect, test } from 'vitest';

import { connectionOf, traceOf } from './messages';

test('a trace is parsed', () => {
    const parsed = { timestamp: 5, direction: 'out', listener: 'page', client: 3, text: '{}' };
    const { listener: door, ...trace } = parsed;
    expect(traceOf({ trace: { ...trace, door } })).toEqual(parsed);
    expect(traceOf({ trace: { ...trace, door: 'all', client: null, more: 1 } })).toEqual({
        ...parsed,
        listener: 'all',
        client: null,
    });
});

test('a malformed trace is ignored', () => {
    const trace = { timestamp: 5, direction: 'in', door: 'device', client: 3, text: '{}' };
    expect(traceOf({ ok: true })).toBeNull();
    expect(traceOf({ trace: null })).toBeNull();
    expect(traceOf({ trace: { ...trace, timestamp: '5' } })).toBeNull();
    expect(traceOf({ trace: { ...trace, direction: 'up' } })).toBeNull();
    expect(traceOf({ trace: { ...trace, door: 'window' } })).toBeNull();
    expect(traceOf({ trace: { ...trace, text: 7 } })).toBeNull();
});

test('a connection is called after its listener and number', () => {
    expect(connectionOf({ listener: 'page', client: 3 })).toBe('page-3');
    expect(connectionOf({ listener: 'all', client: null })).toBe('all');
});
