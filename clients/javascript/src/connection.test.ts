import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { connectTimeout, Connection, retryDelay, type ConnectionObserver } from './connection.js';
import { FakeBrowser, type FakeSocket } from './fakeBrowser.fixture.js';

const address = 'http://127.0.0.1:8097/?key=secret';

let browser: FakeBrowser;
let sockets: readonly FakeSocket[];
let log: string[];

function makeConnection(): Connection {
    const note = (line: string) => () => {
        log.push(line);
    };
    browser.onconnect = (socket) => log.push(`open ${socket.address} ${socket.protocol}`);
    return new Connection(
        address,
        '/settings',
        'settings.v1',
        {
            opened: note('opened'),
            closed: note('closed'),
            unauthorized: note('unauthorized'),
            received: (text) => log.push(text),
        },
        browser,
    );
}

const opening = 'open ws://127.0.0.1:8097/settings?key=secret settings.v1';

beforeEach(() => {
    vi.useFakeTimers();
    browser = new FakeBrowser();
    ({ sockets } = browser);
    log = [];
});

afterEach(() => {
    vi.useRealTimers();
});

describe('a connection', () => {
    it('notifies its observer, and sends while it is open', () => {
        const connection = makeConnection();
        connection.start();
        expect(connection.send('early')).toBe(false);
        sockets[0]?.open();
        expect(connection.send('hello')).toBe(true);
        sockets[0]?.receive('text');
        expect(log).toEqual([opening, 'opened', 'text']);
        expect(sockets[0]?.sent).toEqual(['hello']);
    });

    it('reconnects after delays that grow to ten seconds, and starts over after a success', async () => {
        const connection = makeConnection();
        connection.start();
        const delays: number[] = [];
        for (let attempt = 0; attempt < 8; attempt += 1) {
            const before = Date.now();
            const count = sockets.length;
            sockets.at(-1)?.close();
            while (sockets.length === count) {
                await vi.advanceTimersByTimeAsync(10);
            }
            delays.push(Date.now() - before);
        }
        expect(delays).toEqual([250, 500, 1000, 2000, 4000, 8000, 10_000, 10_000]);
        sockets.at(-1)?.open();
        const before = sockets.length;
        sockets.at(-1)?.close();
        await vi.advanceTimersByTimeAsync(250);
        expect(sockets.length).toBe(before + 1);
    });

    it('retries at once on request, once', () => {
        const connection = makeConnection();
        connection.start();
        sockets[0]?.close();
        connection.retryNow();
        connection.retryNow();
        expect(sockets.length).toBe(2);
        sockets[1]?.open();
        vi.advanceTimersByTime(60_000);
        expect(sockets.length).toBe(2);
    });

    it('gives up an attempt after a timeout', () => {
        const connection = makeConnection();
        connection.start();
        vi.advanceTimersByTime(connectTimeout - 1);
        expect(sockets[0]?.readyState).toBe(0);
        vi.advanceTimersByTime(1);
        expect(sockets[0]?.readyState).toBe(3);
        vi.advanceTimersByTime(250);
        sockets[0]?.open();
        sockets[1]?.open();
        expect(log).toEqual([opening, 'closed', opening, 'opened']);
    });

    it('is replaced on request, and later frames of the old one are dropped', () => {
        const connection = makeConnection();
        connection.start();
        sockets[0]?.open();
        connection.renew();
        sockets[0]?.receive('late');
        expect(connection.send('too early')).toBe(false);
        vi.advanceTimersByTime(250);
        sockets[1]?.open();
        sockets[1]?.receive('new');
        expect(log.slice(1)).toEqual(['opened', 'closed', opening, 'opened', 'new']);
        expect(sockets[0]?.readyState).toBe(3);
    });

    it('does not reconnect once it is stopped', () => {
        const connection = makeConnection();
        connection.start();
        connection.stop();
        connection.retryNow();
        vi.advanceTimersByTime(60_000);
        expect(sockets.length).toBe(1);
    });

    it('is encrypted where the address of the host is', () => {
        new Connection('https://tv.example/', '/device', 'device.v1', {} as ConnectionObserver, browser).start();
        expect(browser.socket.address).toBe('wss://tv.example/device');
    });

    it('reports that the page is unauthorized', async () => {
        const connection = makeConnection();
        connection.start();
        browser.status = 200;
        sockets[0]?.close();
        await vi.advanceTimersByTimeAsync(0);
        expect(log).not.toContain('unauthorized');
        browser.status = 403;
        connection.retryNow();
        sockets[1]?.close();
        await vi.advanceTimersByTimeAsync(0);
        expect(log.slice(-2)).toEqual(['closed', 'unauthorized']);
    });
});

describe('the retry delay', () => {
    it('varies by a quarter, so that many pages do not reconnect at the same moment', () => {
        expect([retryDelay(1, 0), retryDelay(1, 1)]).toEqual([188, 313]);
        expect([retryDelay(20, 0), retryDelay(20, 1)]).toEqual([7500, 12_500]);
    });
});
