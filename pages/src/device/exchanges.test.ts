import { expect, test } from 'vitest';

import { answerTime, exchangesOf, messagesOf } from './exchanges';
import { messageOf, sentByHost } from './message.fixture';
import type { Message } from './messageLog';

const set = (messageId: string) => messageOf({ type: 24, messageId, answer: true, payload: { to: messageId } });
const changed = (messageId: string) =>
    sentByHost({ type: 24, messageId, payload: { outcome: 'changed', value: messageId } });
const refusal = (code: string, index?: number) =>
    sentByHost({ error: { code, message: 'no', ...(index === undefined ? {} : { index }) } });

/** One text for each exchange: request, answers and what is missing. */
function paired(messages: readonly Message[], time = 0, link = 1): string[] {
    return exchangesOf({ messages, time, link }).map(({ first, answers, missing }) =>
        [first, ...answers]
            .map(({ words }) => words)
            .concat(missing || [])
            .join(' | '),
    );
}

test('answers stand beside their requests, whatever came between', () => {
    const event = sentByHost(
        { type: 25, messageId: 'a', origin: 'page', payload: { settingDBId: 'x', from: '1', to: '2' } },
        { listener: 'all', client: null },
    );
    expect(paired([set('a'), set('b'), event, changed('a'), changed('b')])).toEqual([
        'Set undefined to a | changed: a',
        'Set undefined to b | changed: b',
        'x: 1 → 2, by page',
    ]);
});

test('the same messageId of another connection is another request', () => {
    const other = messageOf({ type: 18, messageId: 'a' }, { client: 2 });
    expect(paired([other, set('a'), changed('a')])).toEqual([
        'IsOrliaSelectedVA | no answer yet',
        'Set undefined to a | changed: a',
    ]);
});

test('a refusal answers what was sent before, understood or not', () => {
    expect(paired([messageOf('hello'), refusal('not-json'), messageOf({ type: 8 }), refusal('unknown-type')])).toEqual([
        'hello | refused, not-json: no',
        '{"type":8} | refused, unknown-type: no',
    ]);
});

test('the reason of a refused change is in its answer', () => {
    const refused = sentByHost({
        type: 24,
        messageId: 'a',
        payload: { outcome: 'refused', reason: 'stale', message: 'old' },
    });
    expect(paired([set('a'), refused])).toEqual(['Set undefined to a | refused, stale: old']);
    expect(refused.refused).toBe(true);
});

test('replies of the device come in the order of the commands', () => {
    const device = { listener: 'device' } as const;
    const commands = ['captions', 'fly'].map((command) => messageOf({ command }, device));
    const replies = [sentByHost({ ok: true }, device), sentByHost({ error: { code: 'c', message: 'no' } }, device)];
    expect(paired([...commands, ...replies])).toEqual(['captions | done', 'fly | refused, c: no']);
});

test('a batch has an answer for each request that asks for one', () => {
    const batch = messageOf({
        batch: [
            { type: 24, messageId: 'a', answer: true },
            { type: 24, payload: {} },
            { type: 24, answer: true },
            { type: 18, messageId: 'b' },
        ],
    });
    const selected = sentByHost({ type: 18, messageId: 'b', payload: {} });
    const text = batch.words;
    expect(paired([batch, changed('a')])).toEqual([`${text} | changed: a | no answer yet`]);
    expect(paired([batch, changed('a'), refusal('no-message-id', 2), selected, set('c'), changed('c')])).toEqual([
        `${text} | changed: a | refused, no-message-id: no, index 2 | ${selected.words}`,
        'Set undefined to c | changed: c',
    ]);
    expect(paired([batch, refusal('bad-batch'), set('c'), refusal('busy')])).toEqual([
        `${text} | refused, bad-batch: no`,
        'Set undefined to c | refused, busy: no',
    ]);
});

test('a request that asks for no answer says so', () => {
    expect(paired([messageOf({ type: 24 }), messageOf({ type: 22 }), messageOf({ batch: [{ type: 24 }] })])).toEqual([
        'Set undefined to undefined | asks for no answer',
        'LogOut | asks for no answer',
        'Batch: Set undefined to undefined | asks for no answer',
    ]);
});

test('an answer did not come when a later one did', () => {
    expect(paired([set('a'), set('b'), changed('b')])[0]).toBe('Set undefined to a | no answer came');
});

test('an answer did not come when its time is over', () => {
    expect(paired([set('a')], answerTime - 1)).toEqual(['Set undefined to a | no answer yet']);
    expect(paired([set('a')], answerTime)).toEqual(['Set undefined to a | no answer came']);
    expect(paired([set('a'), changed('a')], answerTime)).toEqual(['Set undefined to a | changed: a']);
});

test('an answer did not come when the host was away, whose clients then have the same numbers', () => {
    const later = { ...changed('a'), link: 2 };
    expect(paired([set('a'), later], 0, 2)).toEqual(['Set undefined to a | no answer came', 'changed: a']);
});

test('an answer without its request stands alone', () => {
    expect(paired([changed('a'), refusal('busy')])).toEqual(['changed: a', 'refused, busy: no']);
});

test('the messages of exchanges have the order in which they came', () => {
    const messages = [set('a'), set('b'), changed('a'), set('c'), changed('b')];
    expect(messagesOf(exchangesOf({ messages, time: 0, link: 1 }))).toEqual(messages);
});
