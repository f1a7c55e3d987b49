import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { connect, readDelay, replyTimeout, type Client } from './client.js';
import { FakeBrowser } from './fakeBrowser.fixture.js';
import type { ChangeEvent, Outcome } from './frames.js';

const clock = 1_700_000_000_000;
const run = '00112233445566778899aabbccddeeff';

interface Sent {
    readonly type?: number;
    readonly messageId: string;
    readonly timestamp?: number;
    readonly batch?: readonly Sent[];
    readonly hello?: object;
    readonly payload?: object;
}

let browser: FakeBrowser;
let log: string[];
let events: ChangeEvent[];
let client: Client;

beforeEach(() => {
    vi.useFakeTimers({ now: clock });
    browser = new FakeBrowser();
    log = [];
    events = [];
    client = connect(
        {
            name: 'test page',
            address: 'http://tv/?key=k',
            status: (status) => log.push(status),
            loaded: (values) => log.push(`loaded ${JSON.stringify(values)}`),
            event: (event) => events.push(event),
            changed: ({ key, value, event }) =>
                log.push(`${key}=${value ?? 'nothing'} by ${event?.origin ?? 'nobody'} ${event?.client ?? ''}`.trim()),
        },
        browser,
    );
});

afterEach(() => {
    vi.useRealTimers();
});

function settle(): Promise<unknown> {
    return vi.advanceTimersByTimeAsync(0);
}

/** The frames that the client has sent over the newest connection, except the first of them. */
function sent(skipped = 0): Sent[] {
    return browser.socket.sent.slice(skipped).map((frame) => JSON.parse(frame) as Sent);
}

function newest(): Sent {
    return sent().at(-1) ?? { messageId: 'none' };
}

function receive(frame: object | string): void {
    browser.socket.receive(frame);
}

function reply(payload: object, messageId = newest().messageId): void {
    receive({ type: 7, messageId, payload });
}

function answer(payload: object, messageId = newest().messageId): void {
    receive({ type: 24, messageId, payload });
}

/** The last greeting; the request for the values follows it, unless the client resumes. */
function greeting(): Sent | undefined {
    return sent()
        .reverse()
        .find(({ hello }) => hello !== undefined);
}

function greet(hello: object): void {
    receive({ messageId: greeting()?.messageId, hello: { version: '1.1.0', run, ...hello } });
}

function event(sequence: number, settingDBId: string, to: string, others: object = { origin: 'socket' }): void {
    const payload = { settingDBId, from: 'old', to };
    receive({ type: 25, messageId: 'h', timestamp: clock, sequence, ...others, payload });
}

/** Connects, up to the values. */
async function goOnline(sequence = 0): Promise<void> {
    browser.socket.open();
    greet({ sequence });
    reply({ settings: { deviceName: 'TV' } });
    await settle();
    log = [];
    browser.socket.sent.length = 0;
}

async function reconnect(): Promise<void> {
    browser.socket.close();
    await vi.advanceTimersByTimeAsync(250);
    browser.socket.open();
}

describe('a connection', () => {
    it('begins with hello and the values', async () => {
        browser.socket.open();
        expect(browser.socket.address).toBe('ws://tv/settings?key=k');
        expect(sent()).toEqual([
            { messageId: 'page-1', hello: { client: 'test page' } },
            { type: 7, messageId: 'page-2', payload: { settings: [] } },
        ]);
        greet({ sequence: 41 });
        expect(sent().length).toBe(2);
        reply({ settings: { deviceName: 'TV', captionsEnabled: 5 } });
        await settle();
        event(42, 'deviceName', 'Den');
        expect(log).toEqual(['loaded {"deviceName":"TV"}', 'online', 'deviceName=Den by socket']);
    });

    it('knows the version of the wire once the host has said it', () => {
        expect(client.version).toBeNull();
        browser.socket.open();
        greet({ sequence: 0 });
        expect(client.version).toBe('1.1.0');
    });

    it('needs no name, and refuses one that the host would refuse', () => {
        connect({ address: 'http://tv/' }, browser);
        browser.socket.open();
        expect(greeting()?.hello).toEqual({});
        for (const name of ['', 'x'.repeat(65), 'a\nb', '\u0085', '\u007f']) {
            expect(() => connect({ name }, browser), name).toThrow(RangeError);
        }
        connect({ name: '📺'.repeat(64), address: 'http://tv/' }, browser);
    });

    it('resumes: it has the events in between, each once, and reads what notices named', async () => {
        await goOnline(17);
        event(18, 'deviceName', 'Attic');
        await reconnect();
        expect(newest().hello).toEqual({ client: 'test page', resume: { run, sequence: 18 } });
        // Events that come before the answer come again with it.
        event(21, 'timezone', 'UTC');
        event(19, 'deviceName', 'Den', { origin: 'page', client: 'phone' });
        event(20, 'deviceName', 'Hall');
        event(21, 'timezone', 'UTC');
        greet({ sequence: 21, missed: false, reread: ['captionsEnabled', 'unheard-of'] });
        event(21, 'timezone', 'UTC');
        event(22, 'timezone', 'Asia/Tokyo');
        expect(log.splice(0)).toEqual([
            'deviceName=Attic by socket',
            'lost',
            'deviceName=Den by page phone',
            'deviceName=Hall by socket',
            'timezone=UTC by socket',
            'online',
            'timezone=Asia/Tokyo by socket',
        ]);
        await vi.advanceTimersByTimeAsync(readDelay);
        expect(sent(1)).toMatchObject([
            {
                payload: { settings: ['deviceName', 'timezone', 'captionsEnabled'] },
            },
        ]);
        reply({
            settings: { deviceName: 'Hall', timezone: 'Asia/Tokyo', captionsEnabled: 'true' },
        });
        await settle();
        expect(log).toEqual(['captionsEnabled=true by nobody']);
    });

    it('reads nothing after a reconnection without events', async () => {
        await goOnline(3);
        await reconnect();
        greet({ sequence: 3, missed: false, reread: [] });
        await vi.advanceTimersByTimeAsync(readDelay);
        expect(sent(1)).toEqual([]);
        expect(log).toEqual(['lost', 'online']);
    });

    it('reads every value when it missed events, or could not read them before', async () => {
        await goOnline(3);
        receive({ notice: { reread: ['captionsEnabled'] } });
        await reconnect();
        event(1, 'deviceName', 'Den');
        greet({ run: 'other', sequence: 1, missed: true });
        expect(newest().payload).toEqual({ settings: [] });
        await reconnect();
        expect(greeting()?.hello).toEqual({ client: 'test page' });
        greet({ run: 'other', sequence: 1 });
        reply({ settings: { deviceName: 'Den' } });
        await settle();
        event(2, 'timezone', 'UTC');
        await vi.advanceTimersByTimeAsync(readDelay);
        expect(sent(2)).toMatchObject([{ payload: { settings: ['timezone'] } }]);
        expect(log.filter((line) => line !== 'lost')).toEqual([
            'loaded {"deviceName":"Den"}',
            'online',
            'timezone=UTC by socket',
        ]);
        await reconnect();
        expect(newest().hello).toEqual({ client: 'test page', resume: { run: 'other', sequence: 2 } });
    });

    it('connects again and reads every value when there is too much to resume', async () => {
        await goOnline(3);
        await reconnect();
        receive({ error: { code: 'busy', message: '' } });
        await vi.advanceTimersByTimeAsync(250);
        browser.socket.open();
        expect(greeting()?.hello).toEqual({ client: 'test page' });
    });

    it('resumes on the same connection should an event be missing', async () => {
        await goOnline(3);
        event(5, 'timezone', 'UTC');
        expect(newest().hello).toMatchObject({ resume: { run, sequence: 3 } });
        event(4, 'deviceName', 'Den');
        event(5, 'timezone', 'UTC');
        greet({ sequence: 5, missed: false, reread: [] });
        expect(log).toEqual(['deviceName=Den by socket', 'timezone=UTC by socket']);
        expect(browser.sockets.length).toBe(1);
    });

    it('is replaced when no reply comes', async () => {
        await goOnline(3);
        const values = client.read();
        await vi.advanceTimersByTimeAsync(replyTimeout - 1);
        expect(browser.sockets.length).toBe(1);
        await vi.advanceTimersByTimeAsync(251);
        expect(await values).toBeNull();
        expect(browser.sockets.length).toBe(2);
    });

    it('reports a host of version 1.0, of which it asks nothing more', async () => {
        browser.socket.open();
        receive({ error: { code: 'unknown-type', message: 'The type 0 is unknown.' } });
        expect(log).toEqual(['unsupported']);
        expect(await client.read()).toBeNull();
        expect(sent().length).toBe(2);
        reply({ settings: {} });
        await settle();
        expect(log).toEqual(['unsupported']);
        await reconnect();
        greet({ sequence: 0 });
        reply({ settings: {} });
        await settle();
        expect(log).toEqual(['unsupported', 'lost', 'loaded {}', 'online']);
    });

    it('reports that it is unauthorized until it is connected again', async () => {
        await goOnline();
        browser.status = 403;
        await reconnect();
        await reconnect();
        browser.status = 0;
        greet({ sequence: 0, missed: false, reread: [] });
        expect(log).toEqual(['lost', 'unauthorized', 'online']);
    });

    it('ends on request', async () => {
        await goOnline();
        client.close();
        client.retryNow();
        await vi.advanceTimersByTimeAsync(60_000);
        expect(browser.sockets.length).toBe(1);
    });
});

describe('a new value', () => {
    beforeEach(() => goOnline());

    it('is sent with a time stamp and answered; the event of it is not reported', async () => {
        const outcome = client.set('deviceName', 'Den');
        expect(sent()).toEqual([
            {
                type: 24,
                messageId: 'page-3',
                timestamp: clock,
                answer: true,
                payload: { settingDBId: 'deviceName', to: 'Den' },
            },
        ]);
        event(1, 'deviceName', 'Den', { origin: 'page', client: 'test page' });
        answer({ outcome: 'changed', settingDBId: 'deviceName', value: 'Den' });
        expect(await outcome).toEqual({ outcome: 'changed', value: 'Den', applied: true });
        expect(log).toEqual([]);
    });

    const refused = { outcome: 'refused', message: 'words', value: 'TV' } as const;
    const answers: [object, Outcome][] = [
        [
            { outcome: 'changed', value: 'TV', applied: false },
            { outcome: 'changed', value: 'TV', applied: false },
        ],
        [{ outcome: 'unchanged' }, { outcome: 'unchanged', value: undefined, applied: true }],
        ...(['incomplete', 'stale', 'read-only', 'wrong-form', 'not-stored'] as const).map(
            (reason): [object, Outcome] => [
                { ...refused, reason },
                { ...refused, reason },
            ],
        ),
        [
            { ...refused, reason: 'of later versions' },
            { ...refused, reason: 'unknown' },
        ],
        [{}, { outcome: 'refused', reason: 'unknown', message: '', value: undefined }],
    ];
    it.each(answers)('has the outcome of the answer %j', async (payload, expected) => {
        const outcome = client.set('deviceName', 'Den');
        answer(payload);
        expect(await outcome).toEqual(expected);
    });

    it.each([
        ['a program of that name', 'Den', { origin: 'socket', client: 'test page' }],
        ['another page', 'Den', { origin: 'page', client: 'another page' }],
        ['a page of that name', 'Hall', { origin: 'page', client: 'test page' }],
    ])('does not hide a change that %s makes at the same moment', async (_who, to, others) => {
        const outcome = client.set('deviceName', 'Den');
        event(1, 'deviceName', to, others);
        event(2, 'deviceName', 'Den', { origin: 'page', client: 'test page' });
        event(3, 'deviceName', 'Den', { origin: 'page', client: 'test page' });
        answer({ outcome: 'changed', value: 'Den' });
        expect((await outcome).outcome).toBe('changed');
        expect(log).toEqual([
            `deviceName=${to} by ${others.origin} ${others.client}`,
            'deviceName=Den by page test page',
        ]);
    });

    it('has a time stamp that is never older than what is known', async () => {
        event(1, 'timezone', 'UTC', { timestamp: clock + 5_000 });
        const outcome = client.set('deviceName', 'Den');
        vi.setSystemTime(clock - 10_000);
        answer({ outcome: 'refused', reason: 'stale', newest: clock + 7_000, value: 'TV' });
        await outcome;
        void client.set('deviceName', 'Attic');
        vi.setSystemTime(clock + 9_000);
        void client.set('deviceName', 'Hall');
        answer({ outcome: 'refused', reason: 'stale', newest: 9e18 });
        await settle();
        void client.set('deviceName', 'Roof');
        expect(sent().map(({ timestamp }) => (timestamp ?? 0) - clock)).toEqual([5_000, 7_000, 9_000, 9_000]);
    });

    it('is not sent when the frame would be over the limit of the host', async () => {
        const frame =
            '{"type":24,"messageId":"page-3","timestamp":1700000000000,"answer":true,"payload":{"settingDBId":"deviceName","to":""}}';
        const fits = 'é' + 'x'.repeat(65_536 - frame.length - 2);
        expect(await client.set('deviceName', `${fits}x`)).toMatchObject({ reason: 'too-long' });
        expect(sent()).toEqual([]);
        void client.set('deviceName', fits);
        expect(sent().length).toBe(1);
    });

    it('has no reply when there is no connection, it is lost, or nothing comes in time', async () => {
        const noReply = { outcome: 'refused', reason: 'no-reply' };
        const late = client.set('deviceName', 'Den');
        await vi.advanceTimersByTimeAsync(replyTimeout);
        expect(await late).toMatchObject(noReply);
        expect(await client.set('deviceName', 'Den')).toMatchObject(noReply);
        await vi.advanceTimersByTimeAsync(250);
        browser.socket.open();
        greet({ sequence: 0, missed: false, reread: [] });
        const lost = client.set('timezone', 'UTC');
        browser.socket.close();
        expect(await lost).toMatchObject(noReply);
    });

    it('is read after a reconnection when its answer did not come', async () => {
        void client.set('deviceName', 'Den');
        await reconnect();
        event(1, 'deviceName', 'Den', { origin: 'page', client: 'test page' });
        greet({ sequence: 1, missed: false, reread: [] });
        void client.set('timezone', 'UTC');
        await reconnect();
        greet({ sequence: 1, missed: false, reread: [] });
        await vi.advanceTimersByTimeAsync(readDelay);
        expect(sent(1)).toMatchObject([{ type: 7, payload: { settings: ['deviceName', 'timezone'] } }]);
        reply({ settings: { deviceName: 'Den', timezone: 'UTC' } });
        await settle();
        expect(log.filter((line) => line.includes('='))).toEqual([
            'deviceName=Den by page test page',
            'timezone=UTC by nobody',
        ]);
    });
});

describe('a batch', () => {
    beforeEach(() => goOnline());

    it('is one frame with an outcome for each change', async () => {
        const outcomes = client.batch([
            { key: 'deviceName', to: 'Den' },
            { key: 'captionsFontSize', to: 'FONT_LARGE' },
            { key: 'captionsEnabled', to: 'true' },
        ]);
        expect(sent()).toMatchObject([
            {
                batch: [
                    { type: 24, messageId: 'page-3', answer: true, payload: { settingDBId: 'deviceName', to: 'Den' } },
                    {
                        type: 24,
                        messageId: 'page-4',
                        payload: { settingDBId: 'captionsFontSize' },
                    },
                    { type: 24, messageId: 'page-5' },
                ],
            },
        ]);
        event(1, 'deviceName', 'Den', { origin: 'page', client: 'test page' });
        answer({ outcome: 'changed', value: 'Den' }, 'page-3');
        receive({ error: { code: 'busy', message: '', index: 1 } });
        answer({ outcome: 'refused', reason: 'read-only', value: 'false' }, 'page-5');
        expect(await outcomes).toMatchObject([
            { outcome: 'changed' },
            { outcome: 'refused', reason: 'no-reply' },
            { outcome: 'refused', reason: 'read-only' },
        ]);
        expect(log).toEqual([]);
    });

    it('is not sent when it is empty or over the limits of the host', async () => {
        const change = { key: 'deviceName', to: 'x' } as const;
        expect(await client.batch([])).toEqual([]);
        const outcomes = await client.batch(Array(65).fill(change));
        expect(outcomes.length).toBe(65);
        expect(outcomes[64]).toMatchObject({ reason: 'too-long' });
        const [outcome] = await client.batch(Array(2).fill({ ...change, to: 'x'.repeat(33_000) }));
        expect(outcome).toMatchObject({ reason: 'too-long' });
        expect(sent()).toEqual([]);
        void client.batch(Array(64).fill(change));
        expect(newest().batch?.length).toBe(64);
    });
});

describe('a change by others', () => {
    beforeEach(() => goOnline());

    it('is reported at once, and again if the host has another value', async () => {
        event(1, 'deviceName', '');
        event(2, 'timezone', 'UTC', { origin: 'device' });
        expect(log).toEqual(['deviceName= by socket', 'timezone=UTC by device']);
        await vi.advanceTimersByTimeAsync(readDelay);
        reply({ settings: { deviceName: 'TV', timezone: 'UTC' } });
        await settle();
        expect(log.slice(2)).toEqual(['deviceName=TV by socket']);
    });

    it('is told to those who keep a list of changes, as are changes of this client, each once and in order', async () => {
        void client.set('deviceName', 'Den');
        event(1, 'timezone', 'UTC');
        event(2, 'deviceName', 'Den', { origin: 'page', client: 'test page' });
        event(3, 'xUnknown', 'text');
        event(3, 'timezone', 'UTC');
        await settle();
        expect(events).toEqual([
            { key: 'timezone', from: 'old', to: 'UTC', origin: 'socket', client: null, timestamp: clock, sequence: 1 },
            { ...events[1], key: 'deviceName', origin: 'page', client: 'test page', sequence: 2 },
        ]);
    });

    it('is read once after a notice, with those that follow', async () => {
        receive({ notice: { reread: ['captionsEnabled', 'timezone'] } });
        for (let number = 1; number <= 100; number += 1) {
            event(number, 'deviceName', `${number}`);
        }
        await vi.advanceTimersByTimeAsync(readDelay);
        expect(sent()).toMatchObject([
            {
                payload: { settings: ['captionsEnabled', 'timezone', 'deviceName'] },
            },
        ]);
        reply({ settings: { captionsEnabled: 'true', deviceName: '100' } });
        await settle();
        expect(log.slice(100)).toEqual(['captionsEnabled=true by nobody', 'timezone=nothing by nobody']);
    });

    it('is read after a reconnection when the connection is lost before', async () => {
        receive({ notice: { reread: ['captionsEnabled'] } });
        event(1, 'deviceName', 'Den');
        browser.socket.close();
        await vi.advanceTimersByTimeAsync(250);
        browser.socket.open();
        greet({ sequence: 1, missed: false, reread: [] });
        await vi.advanceTimersByTimeAsync(readDelay);
        expect(sent(1)).toMatchObject([{ payload: { settings: ['captionsEnabled', 'deviceName'] } }]);
    });

    it('is not reported for keys that the catalogue does not have', async () => {
        event(1, 'xUnknown', 'text');
        receive({ notice: { reread: ['xUnknown', 7] } });
        await vi.advanceTimersByTimeAsync(readDelay);
        expect(log).toEqual([]);
        expect(sent()).toEqual([]);
    });

    it('has no origin when this version does not know the word', () => {
        event(1, 'deviceName', 'Den', { origin: 'moon' });
        expect(log).toEqual(['deviceName=Den by nobody']);
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
            receive(text);
        }
        expect(log).toEqual([]);
    });
});

describe('a request', () => {
    beforeEach(() => goOnline());

    it('is matched with its reply', async () => {
        const first = client.read(['deviceName']);
        const second = client.read(['timezone']);
        reply({ settings: { timezone: 'UTC' } }, 'page-4');
        reply({ settings: { deviceName: 'TV' } }, 'page-3');
        expect([await first, await second]).toEqual([{ deviceName: 'TV' }, { timezone: 'UTC' }]);
    });

    it('that is refused resolves with null, and leaves the next one alone', async () => {
        const first = client.history();
        const second = client.read(['timezone']);
        receive({ error: { code: 'busy', message: '' } });
        reply({ settings: { timezone: 'UTC' } });
        expect([await first, await second]).toEqual([null, { timezone: 'UTC' }]);
    });

    it('reads the history', async () => {
        const events = client.history(2, 'deviceName');
        expect(sent()).toEqual([{ messageId: 'page-3', history: { settingDBId: 'deviceName', limit: 2 } }]);
        const frame = { type: 25, timestamp: clock, sequence: 4, origin: 'page', client: 'phone' };
        const payload = { settingDBId: 'deviceName', from: 'TV', to: 'Den' };
        receive({
            messageId: 'page-3',
            history: { events: [{ ...frame, payload }, { payload: { settingDBId: 'xUnknown' } }, 5] },
        });
        expect(await events).toEqual([
            {
                key: 'deviceName',
                from: 'TV',
                to: 'Den',
                origin: 'page',
                client: 'phone',
                timestamp: clock,
                sequence: 4,
            },
        ]);
        void client.history();
        expect(sent(1)).toEqual([{ messageId: 'page-4', history: {} }]);
    });

    it('asks whether this assistant is the selected one', async () => {
        const selected = client.isSelected();
        expect(sent()).toEqual([{ type: 18, messageId: 'page-3' }]);
        receive({ type: 18, messageId: 'page-3', payload: { isOrliaSelectedAsVA: true } });
        expect(await selected).toBe(true);
    });

    it.each([
        ['opens the settings', 19, () => client.openSettings()],
        ['logs out', 22, () => client.logOut()],
    ])('%s and tells whether that was done', async (_name, type, act) => {
        for (const [payload, expected] of [
            [{ outcome: 'done' }, true],
            [{ outcome: 'refused', reason: 'not-stored', message: '' }, false],
        ] as const) {
            const done = act();
            expect(newest()).toMatchObject({ type, answer: true });
            receive({ type, messageId: newest().messageId, payload });
            expect(await done).toBe(expected);
        }
        browser.socket.close();
        expect(await act()).toBeNull();
    });
});
