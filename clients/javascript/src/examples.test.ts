// @vitest-environment node
import { expect, test } from 'vitest';

import { rulesOf } from '../settings/rules';
import { examples, everyStep, type Step } from './examples.fixture';
import { parseFrame } from './frames';
import { Session, type Outcome } from './session';

const kinds: Readonly<Record<string, string>> = {
    'get-settings-reply': 'reply',
    'is-orlia-selected-va-reply': 'reply',
    'setting-changed-event': 'event',
    notice: 'notice',
    refusal: 'refusal',
};

/** Without the frames that the pages do not ask for. */
const received = everyStep.filter(
    (step) => step.at !== 'device' && step.received !== undefined && (step.schema ?? '') in kinds,
);

test('the host’s frames in the examples are understood', () => {
    expect(received.length).toBeGreaterThan(20);
    for (const step of received) {
        expect(parseFrame(JSON.stringify(step.received))?.kind, step.schema).toBe(kinds[step.schema ?? '']);
    }
});

test('an event of the examples is parsed completely', () => {
    const event = examples.get('set-settings')?.find((step) => step.received !== undefined);
    expect(parseFrame(JSON.stringify(event?.received))).toEqual({
        kind: 'event',
        key: 'deviceName',
        from: 'TV',
        to: 'Living room',
        origin: 'socket',
        sequence: 1,
        timestamp: 1795243863837,
    });
});

test('a session follows the examples of the pages', async () => {
    const sent: unknown[] = [];
    const log: string[] = [];
    const session = new Session(
        (frame) => sent.push(JSON.parse(frame)) > 0,
        {
            changed: ({ key, to }) => log.push(`${key}=${to}`),
            reread: (keys) => log.push(`reread ${keys.join()}`),
            missed: () => log.push('missed'),
            timedOut: () => log.push('timed out'),
        },
        rulesOf,
        () => 1_700_000_000_000,
    );
    session.opened();

    /** Plays an example: runs `act` where the example has its requests, and passes on the received frames. Returns: the result of `act`. */
    async function play<Result>(name: string, act: () => Promise<Result>): Promise<Result> {
        const steps = (examples.get(name) ?? []).filter(({ at }) => at === 'page');
        const requests = steps.filter((step) => step.sent !== undefined);
        const receive = (step: Step): void => {
            session.received(JSON.stringify(step.received));
        };
        const first = steps.findIndex((step) => step.sent !== undefined);
        steps.slice(0, first).forEach(receive);
        sent.length = 0;
        const result = act();
        expect(sent, name).toEqual(requests.map((step) => step.sent));
        steps
            .slice(first)
            .filter((step) => step.received !== undefined)
            .forEach(receive);
        return result;
    }

    const accepted: Outcome = { result: 'accepted', value: 'Living room' };
    const refused: Outcome = { result: 'refused', reason: 'read-only', value: 'false' };
    expect(await play('page-reads', () => session.read())).toMatchObject({ deviceName: 'TV', friendlyName: 'TV' });
    expect(await play('page-sets', () => session.set('deviceName', 'Living room'))).toEqual(accepted);
    expect(await play('page-is-refused', () => session.set('captionsEnabled', 'true'))).toEqual(refused);
    expect(await play('page-rereads', () => session.read(['captionsEnabled']))).toEqual({ captionsEnabled: 'true' });
    expect(log).toEqual(['reread captionsEnabled']);
});
