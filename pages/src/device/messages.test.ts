import { expect, test } from 'vitest';

import { connectionOf, traceOf } from './messages';

test('a trace is parsed', () => {
    const parsed = { timestamp: 5, direction: 'out', listener: 'page', client: 3, text: '{}' };
    const { listener: door, ...trace } = parsed;
    expect(traceOf({ trace: { ...trace, door } })).toEqual(parsed);
    expect(traceOf({ trace: { ...trace, door: 'all', client: null } })).toEqual({
        ...parsed,
        listener: 'all',
        client: null,
    });
});

test('another frame is no trace', () => {
    expect([traceOf({ ok: true }), traceOf({ trace: null })]).toEqual([null, null]);
});

test('a connection is called after its listener and number', () => {
    expect(connectionOf({ listener: 'page', client: 3 })).toBe('page-3');
    expect(connectionOf({ listener: 'all', client: null })).toBe('all');
});
