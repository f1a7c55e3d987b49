import { expect, test } from 'vitest';

import { frameKinds, kindOf, traceOf } from './messages';

test('every frame of the protocol has its kind', () => {
    const frames = [
        '{"type":7,"messageId":"m"}',
        '{"type":18}',
        '{"type":19}',
        '{"type":22}',
        '{"type":24}',
        '{"type":25}',
        '{"notice":{"reread":[]}}',
        '{"error":{"code":"not-json"}}',
        '{"command":"show"}',
        '{"ok":true}',
        'hello',
    ];
    expect(frames.map(kindOf)).toEqual(frameKinds);
});

test('a device state is a reply, and unknown frames are other', () => {
    expect(kindOf('{"device":{}}')).toBe('reply');
    expect(['[7]', 'null', '7', '{}', '{"type":"7"}', '{"type":8}', ''].map(kindOf)).toEqual(Array(7).fill('other'));
});

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
