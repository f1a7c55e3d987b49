import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { patience, Session, type Outcome } from './session';

const clock = 1_700_000_000_000;

interface Sent {
    readonly type: number;
    readonly messageId: string;
    readonly timestamp?: number;
    readonly payload?: Record<string, unknown>;
}

let sent: Sent[];
let told: string[];
let connected: boolean;
let session: Session;
let now: number;

beforeEach(() => {
    vi.useFakeTimers();
    sent = [];
    told = [];
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
            changed: ({ key, to, origin }) => told.push(`${key}=${to} by ${origin}`),
            reread: (keys) => told.push(`reread ${keys.join()}`),
            missed: () => told.push('missed'),
            silent: () => told.push('silent'),
        },
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
    it('is sent with the time, and read afterwards on the same connection', async () => {
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
        expect(told).toEqual([]);
    });

    it('is unchanged when no event came and the value is the wanted one', async () => {
        const outcome = session.set('deviceName', 'Den');
        reply({ deviceName: 'Den' });
        expect(await outcome).toEqual({ result: 'unchanged', value: 'Den' });
    });

    const refusals: [string, string, string, Outcome][] = [
        ['deviceName', 'Den', 'TV', { result: 'refused', reason: 'not-taken', value: 'TV' }],
        ['captionsEnabled', 'true', 'false', { result: 'refused', reason: 'read-only', value: 'false' }],
        ['orliaLocale', 'fr-FR', '["en-US"]', { result: 'refused', reason: 'format', value: '["en-US"]' }],
        ['orliaLocale', '["", 1]', '["en-US"]', { result: 'refused', reason: 'format', value: '["en-US"]' }],
    ];
    it.each(refusals)('of %s is refused with a reason', async (key, to, value, expected) => {
        const outcome = session.set(key, to);
        reply({ [key]: value });
        expect(await outcome).toEqual(expected);
    });

    it('is overtaken when somebody else wrote in between', async () => {
        const outcome = session.set('deviceName', 'Den');
        event('deviceName', 'Attic', 'socket');
        reply({ deviceName: 'Attic' });
        expect(await outcome).toEqual({ result: 'refused', reason: 'overtaken', value: 'Attic' });
        expect(told).toEqual(['deviceName=Attic by socket']);
    });

    it('is told as the change of somebody else who wanted the same at the same moment', async () => {
        const outcome = session.set('deviceName', 'Den');
        event('deviceName', 'Den', 'socket');
        reply({ deviceName: 'Den' });
        expect(await outcome).toEqual({ result: 'accepted', value: 'Den' });
        expect(told).toEqual(['deviceName=Den by socket']);
    });

    it('is accepted even if somebody else wrote right after it', async () => {
        const outcome = session.set('deviceName', 'Den');
        event('deviceName', 'Den');
        event('deviceName', 'Attic', 'socket');
        reply({ deviceName: 'Attic' });
        expect(await outcome).toEqual({ result: 'accepted', value: 'Attic' });
        expect(told).toEqual(['deviceName=Attic by socket']);
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

    it('has no answer when there is no connection, it is lost, or nothing comes in time', async () => {
        const noAnswer: Outcome = { result: 'refused', reason: 'no-answer', value: null };
        connected = false;
        expect(await session.set('deviceName', 'Den')).toEqual(noAnswer);
        connected = true;
        const lost = session.set('deviceName', 'Den');
        session.closed();
        expect(await lost).toEqual(noAnswer);
        const late = session.set('deviceName', 'Den');
        await vi.advanceTimersByTimeAsync(patience);
        expect(await late).toEqual(noAnswer);
        expect(told).toEqual(['silent']);
    });

    it('of a switch is refused when it is announced but the device would not throw it', async () => {
        const refused = session.set('handsFreeEnabled', 'true');
        event('handsFreeEnabled', 'true');
        reply({ handsFreeEnabled: 'false' });
        expect(await refused).toEqual({ result: 'refused', reason: 'not-taken', value: 'false' });
        const followed = session.set('handsFreeEnabled', 'true');
        event('handsFreeEnabled', 'true');
        event('handsFreeEnabled', 'false', 'device');
        reply({ handsFreeEnabled: 'false' });
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

describe('what others do', () => {
    it('is told, also when it is the same setting on another page', () => {
        event('deviceName', 'Den', 'page');
        event('timezone', 'UTC', 'device');
        session.received('{"notice":{"reread":["captionsEnabled","timezone"]}}');
        expect(told).toEqual(['deviceName=Den by page', 'timezone=UTC by device', 'reread captionsEnabled,timezone']);
    });

    it('was missed when the sequence has a gap or starts anew, but not at the first event of a connection', () => {
        event('a', '1', 'socket', 7);
        event('a', '2', 'socket', 8);
        event('a', '3', 'socket', 10);
        event('a', '4', 'socket', 1);
        session.opened();
        event('a', '5', 'socket', 5);
        expect(told).toEqual(['a=1 by socket', 'a=2 by socket', 'missed', 'missed', 'a=5 by socket']);
    });

    it('does not hurt when it is nonsense', () => {
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
        expect(told).toEqual(['= by socket', 'reread ']);
    });
});

describe('reading', () => {
    it('gives texts only', async () => {
        const values = session.read();
        reply({ deviceName: 'TV', odd: 5 });
        expect(await values).toEqual({ deviceName: 'TV' });
        expect(sent).toEqual([{ type: 7, messageId: 'page-1', payload: { settings: [] } }]);
    });

    it('answers each question with its own reply', async () => {
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
