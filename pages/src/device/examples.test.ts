// @vitest-environment node
import { expect, test } from 'vitest';

import { everyStep, examples } from '../../../clients/javascript/src/examples.fixture';
import type { Command } from './commands';
import { kindOf, traceOf } from './messages';
import { DeviceSession } from './session';

const kinds: Readonly<Record<string, string>> = {
    'get-settings-request': 'GetSettings',
    'get-settings-reply': 'GetSettings',
    'is-orlia-selected-va-request': 'IsOrliaSelectedVA',
    'is-orlia-selected-va-reply': 'IsOrliaSelectedVA',
    'open-va-settings-request': 'OpenVASettings',
    'log-out-request': 'LogOut',
    'set-settings-request': 'SetSettings',
    'setting-changed-event': 'event',
    notice: 'notice',
    refusal: 'error',
    'device-refusal': 'error',
    'open-va-settings-answer': 'OpenVASettings',
    'log-out-answer': 'LogOut',
    'set-settings-answer': 'SetSettings',
    'device-command': 'command',
    'device-done': 'reply',
    'device-state': 'reply',
};

test('the frames of the examples have their kinds', () => {
    let seen = 0;
    for (const { sent, received, schema } of everyStep) {
        // The others have no kind, or are not traced.
        if (schema !== undefined && schema in kinds) {
            expect(kindOf(JSON.stringify(sent ?? received)), schema).toBe(kinds[schema]);
            seen += 1;
        }
    }
    expect(seen).toBeGreaterThan(40);
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

test.each(['device-commands', 'device-switches', 'device-refusals'])(
    '%s get the replies of the example',
    async (name) => {
        const session = new DeviceSession(
            () => true,
            () => undefined,
        );
        session.opened();
        session.received('{"ok":true}');
        session.received('{"device":{}}');
        const steps = (examples.get(name) ?? []).filter(
            ({ at, schema }) => at === 'device' && schema !== 'device-page',
        );
        for (const [index, { sent }] of steps.entries()) {
            const answer = steps[index + 1]?.received;
            if (sent === undefined || answer === undefined || sent['command'] === 'show') {
                continue;
            }
            const outcome = session.run(sent as Command);
            session.received(JSON.stringify(answer));
            session.received('{"device":{}}');
            expect(await outcome).toEqual('error' in answer ? { ok: false, ...(answer['error'] as object) } : answer);
        }
    },
);
