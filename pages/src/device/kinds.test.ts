import { expect, test } from 'vitest';

import { frameKinds, kindOf } from './kinds';

test('every frame of the protocol has its kind', () => {
    const frames = [
        { type: 7, messageId: 'm' },
        { type: 18 },
        { type: 19 },
        { type: 22 },
        { type: 24 },
        { type: 25 },
        { notice: { reread: [] } },
        { command: 'show' },
        { batch: [] },
        { messageId: 'm', hello: {} },
        { messageId: 'm', history: {} },
        { messageId: 'm', catalogue: {} },
        { messageId: 'm', page: {} },
        { messageId: 'm', backup: {} },
        { messageId: 'm', status: {} },
        { error: { code: 'not-json' } },
        { ok: true },
        {},
    ];
    expect(frames.map(kindOf)).toEqual(frameKinds);
});

test('a device state is a reply, and unknown frames are other', () => {
    expect(kindOf({ device: {} })).toBe('reply');
    expect([{ type: '7' }, { type: 8 }, { a: 1 }].map(kindOf)).toEqual(Array(3).fill('other'));
});
