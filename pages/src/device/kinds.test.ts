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
        { error: { code: 'not-json' } },
        { command: 'show' },
        { ok: true },
        { batch: [] },
        { messageId: 'm', hello: {} },
        { messageId: 'm', history: {} },
        { messageId: 'm', catalogue: {} },
        { messageId: 'm', page: {} },
        { messageId: 'm', backup: {} },
        { messageId: 'm', status: {} },
        {},
    ];
    expect(frames.map(kindOf)).toEqual(frameKinds);
});

test('unknown frames are other', () => {
    expect([{ type: 8 }, { a: 1 }].map(kindOf)).toEqual(['other', 'other']);
});
