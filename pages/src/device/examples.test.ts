// @vitest-environment node
import { expect, test } from 'vitest';

import { everyStep, examples, type Step } from '../../../clients/javascript/src/examples.fixture';
import { exchangesOf } from './exchanges';
import { messageOf } from './message.fixture';
import { traceOf } from './messages';

/** Replies that the host does not trace, and the commands that it does not. */
const untracedReplies = /^device-(trace|page|faults|state|world)$/;
const untracedCommands = ['show', 'page', 'trace', 'faults', 'save'];

const traced = everyStep.filter(isTraced);

function isTraced({ sent, schema = '' }: Step): boolean {
    return !untracedReplies.test(schema) && !untracedCommands.includes(String(sent?.['command']));
}

test('every frame of the examples has its kind, and words without JSON', () => {
    const known = traced.filter(({ schema }) => schema !== undefined);
    expect(known.length).toBeGreaterThan(80);
    for (const { sent, received, schema } of known) {
        const { kind, words } = messageOf(sent ?? received ?? {}, { direction: sent === undefined ? 'out' : 'in' });
        expect(kind, schema).not.toBe('other');
        expect(words, schema).not.toMatch(/\{"|"\w+":|undefined|\[object/);
    }
});

test.each([...examples.keys()])('in the example %s every request has its answer, every answer its request', (name) => {
    // The reply to `trace` has no schema of its own.
    const steps = (examples.get(name) ?? [])
        .filter(isTraced)
        .filter((_, index, all) => name !== 'device-trace' || all[index]?.schema !== 'device-done');
    const messages = steps.map(({ at, sent, sentText, received }) =>
        messageOf(sentText ?? sent ?? received ?? '', {
            listener: at,
            direction: received === undefined ? 'in' : 'out',
        }),
    );
    const loose = exchangesOf({ messages, time: 0, link: 1 }).filter(({ first, missing }) =>
        first.direction === 'in' ? missing.startsWith('no') : !['event', 'notice'].includes(first.kind),
    );
    // The requests of this batch are of a type that it must not have; alone they would ask for nothing.
    const isBadBatch = (text: string) => text === '{"batch":[{"type":22}]}' || text.includes('"bad-batch"');
    expect(loose.map(({ first }) => first.text).filter((text) => !isBadBatch(text))).toEqual([]);
});

test('the traces in the examples are parsed', () => {
    const traces = everyStep
        .filter(({ schema }) => schema === 'device-trace')
        .map(({ received }) => traceOf(received ?? {}));
    expect(traces).toMatchObject([
        { direction: 'in', listener: 'socket', client: 9 },
        { direction: 'out', listener: 'all', client: null },
    ]);
});
