import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { replyTimeout, Session, type Outcome, type SettingRules } from './session';

const clock = 1_700_000_000_000;

interface Sent {
    readonly type: number;
    readonly messageId: string;
    readonly timestamp?: number;
    readonly payload?: Record<string, unknown>;
}

/** Settings that differ from one without rules. */
const rules: Readonly<Record<string, Partial<SettingRules>>> = {
    readOnly: { isReadOnly: true },
    list: { isWellFormed: (value) => value.startsWith('[') },
    atDevice: { mayRevertAfterEvent: true },
};
const noRules: SettingRules = { isReadOnly: false, mayRevertAfterEvent: false, isWellFormed: () => true };

let sent: Sent[];
let log: string[];
let connected: boolean;
let session: Session;
let now: number;

beforeEach(() => {
    vi.useFakeTimers();
    sent = [];
    log = [];
    connected = true;
    now = clock;
    session = new Session(
        (frame) => {
            if (connected) {
                sent.push(JSON.parse(frame) as Sent);
            }
            return connected;
        },
        {
            changed: ({ key, to, origin }) => log.push(`${key}=${to} by ${origin}`),
            reread: (keys) => log.push(`reread ${keys.join()}`),
            missed: () => log.push('missed'),
            timedOut: () => log.push('timed out'),
        },
        (key) => ({ ...noRules, ...rules[key] }),
        () => now,
    );
    session.opened();
});

afterEach(() => {
    vi.useRealTimers();
});

let sequence = 0;

function event(key: string, to: string, origin = 'page', number = (sequence += 1), timestamp = clock): void {
    const payload = { settingDBId: key, from: 'old', to };
    session.received(
        JSON.stringify({ type: 25, messageId: `h${number}`, timestamp, sequence: number, origin, payload }),
    );
}

function reply(settings: Record<string, unknown>, to = sent.at(-1)?.messageId): void {
    session.received(JSON.stringify({ type: 7, messageId: to, payload: { settings } }));
}

describe('a new value', () => {
    it('is sent with a time stamp, and read afterwards on the same connection', async () => {
        const outcome = session.set('deviceName', 'Den');
        expect(sent).toEqual([
            {
                type: 24,
                messageId: 'page-1',
                timestamp: clock,
                payload: { settingDBId: 'deviceName', to: 'Den' },
            },
            { type: 7, messageId: 'page-2', payload: { settings: ['deviceName'] } },
        ]);
        event('deviceName', 'Den');
        reply({ deviceName: 'Den' });
        expect(await outcome).toEqual({ result: 'accepted', value: 'Den' });
        expect(log).toEqual([]);
    });

    it('is unchanged when no event came and the value is the wanted one', async () => {
        const outcome = session.set('deviceName', 'Den');
        reply({ deviceName: 'Den' });
        expect(await outcome).toEqual({ result: 'unchanged', value: 'Den' });
    });

    const refusals: [string, string, string, Outcome][] = [
        ['deviceName', 'Den', 'TV', { result: 'refused', reason: 'not-applied', value: 'TV' }],
        ['readOnly', 'true', 'false', { result: 'refused', reason: 'read-only', value: 'false' }],
        ['list', 'fr-FR', '["en-US"]', { result: 'refused', reason: 'wrong-form', value: '["en-US"]' }],
        ['list', '["fr-FR"]', '["en-US"]', { result: 'refused', reason: 'not-applied', value: '["en-US"]' }],
    ];
    it.each(refusals)('of %s is refused with a reason', async (key, to, value, expected) => {
        const outcome = session.set(key, to);
        reply({ [key]: value });
        expect(await outcome).toEqual(expected);
    });

    it('is overwritten when another client wrote in between', async () => {
        const outcome = session.set('deviceName', 'Den');
        event('deviceName', 'Attic', 'socket');
        reply({ deviceName: 'Attic' });
        expect(await outcome).toEqual({ result: 'refused', reason: 'overwritten', value: 'Attic' });
        expect(log).toEqual(['deviceName=Attic by socket']);
    });

    it('is reported as a change of another client that set the same value at the same moment', async () => {
        const outcome = session.set('deviceName', 'Den');
        event('deviceName', 'Den', 'socket');
        reply({ deviceName: 'Den' });
        expect(await outcome).toEqual({ result: 'accepted', value: 'Den' });
        expect(log).toEqual(['deviceName=Den by socket']);
    });

    it('is accepted even if another client wrote right after it', async () => {
        const outcome = session.set('deviceName', 'Den');
        event('deviceName', 'Den');
        event('deviceName', 'Attic', 'socket');
        reply({ deviceName: 'Attic' });
        expect(await outcome).toEqual({ result: 'accepted', value: 'Attic' });
        expect(log).toEqual(['deviceName=Attic by socket']);
    });

    it('is not sent when the frame would be over the limit of the host', async () => {
        const fits =
            65_536 -
            '{"type":24,"messageId":"page-1","timestamp":1700000000000,"payload":{"settingDBId":"deviceName","to":""}}'
                .length;
        expect(await session.set('deviceName', 'é'.repeat(fits / 2) + 'xx')).toEqual({
            result: 'refused',
            reason: 'too-long',
            value: null,
        });
        expect(sent).toEqual([]);
        void session.set('deviceName', 'x'.repeat(fits));
        expect(sent.map(({ type }) => type)).toEqual([24, 7]);
    });

    it('has no reply when there is no connection, it is lost, or nothing comes in time', async () => {
        const noReply: Outcome = { result: 'refused', reason: 'no-reply', value: null };
        connected = false;
        expect(await session.set('deviceName', 'Den')).toEqual(noReply);
        connected = true;
        const lost = session.set('deviceName', 'Den');
        session.closed();
        expect(await lost).toEqual(noReply);
        const late = session.set('deviceName', 'Den');
        await vi.advanceTimersByTimeAsync(replyTimeout);
        expect(await late).toEqual(noReply);
        expect(log).toEqual(['timed out']);
    });

    it('is refused when it was announced but its owner did not apply it', async () => {
        const refused = session.set('atDevice', 'true');
        event('atDevice', 'true');
        reply({ atDevice: 'false' });
        expect(await refused).toEqual({ result: 'refused', reason: 'not-applied', value: 'false' });
        const followed = session.set('atDevice', 'true');
        event('atDevice', 'true');
        event('atDevice', 'false', 'device');
        reply({ atDevice: 'false' });
        expect(await followed).toEqual({ result: 'accepted', value: 'false' });
        const emptied = session.set('deviceName', '');
        event('deviceName', '');
        reply({ deviceName: 'TV' });
        expect(await emptied).toEqual({ result: 'accepted', value: 'TV' });
    });

    it('has a time stamp that is never older than what is known', () => {
        event('timezone', 'UTC', 'socket', (sequence += 1), clock + 5_000);
        void session.set('deviceName', 'Den');
        now = clock - 10_000;
        void session.set('deviceName', 'Attic');
        now = clock + 9_000;
        void session.set('deviceName', 'Hall');
        expect(sent.filter(({ type }) => type === 24).map(({ timestamp }) => timestamp)).toEqual([
            clock + 5_000,
            clock + 5_000,
            clock + 9_000,
        ]);
    });
});

describe('a change by others', () => {
    it('is reported, also from another page', () => {
        event('deviceName', 'Den', 'page');
        event('timezone', 'UTC', 'device');
        session.received('{"notice":{"reread":["captionsEnabled","timezone"]}}');
        expect(log).toEqual(['deviceName=Den by page', 'timezone=UTC by device', 'reread captionsEnabled,timezone']);
    });

    it('was missed when the sequence has a gap or starts anew, but not at the first event of a connection', () => {
        event('a', '1', 'socket', 7);
        event('a', '2', 'socket', 8);
        event('a', '3', 'socket', 10);
        event('a', '4', 'socket', 1);
        session.opened();
        event('a', '5', 'socket', 5);
        expect(log).toEqual(['a=1 by socket', 'a=2 by socket', 'missed', 'missed', 'a=5 by socket']);
    });

    it('is ignored when the frame is malformed', () => {
        for (const text of [
            '',
            'x',
            '[]',
            'null',
            '{}',
            '{"type":7}',
            '{"type":25}',
            '{"notice":{"reread":7}}',
            '{"error":{}}',
        ]) {
            session.received(text);
        }
        expect(log).toEqual(['= by socket', 'reread ']);
    });
});

describe('reading', () => {
    it('returns only texts', async () => {
        const values = session.read();
        reply({ deviceName: 'TV', odd: 5 });
        expect(await values).toEqual({ deviceName: 'TV' });
        expect(sent).toEqual([{ type: 7, messageId: 'page-1', payload: { settings: [] } }]);
    });

    it('matches each reply to its request', async () => {
        const first = session.read(['a']);
        const second = session.read(['b']);
        reply({ b: '2' }, 'page-2');
        reply({ a: '1' }, 'page-1');
        expect(await first).toEqual({ a: '1' });
        expect(await second).toEqual({ b: '2' });
    });

    it('asks whether this assistant is the selected one', async () => {
        const selected = session.isSelected();
        session.received('{"type":18,"messageId":"page-1","payload":{"isOrliaSelectedAsVA":true}}');
        expect(await selected).toBe(true);
        expect(sent).toEqual([{ type: 18, messageId: 'page-1' }]);
    });
});
