import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { connectTimeout, Connection, retryDelay } from './connection';

class FakeSocket {
    readyState = 0;
    sent: string[] = [];
    onopen: (() => void) | null = null;
    onmessage: ((event: { data: string }) => void) | null = null;
    onclose: (() => void) | null = null;

    send(text: string): void {
        this.sent.push(text);
    }
    close(): void {
        this.readyState = 3;
        this.onclose?.();
    }
    open(): void {
        this.readyState = 1;
        this.onopen?.();
    }
}

let sockets: FakeSocket[];
let log: string[];
let status: number;

function makeConnection(): Connection {
    const note = (line: string) => () => {
        log.push(line);
    };
    return new Connection(
        '/settings',
        'settings.v1',
        {
            opened: note('opened'),
            closed: note('closed'),
            unauthorized: note('unauthorized'),
            received: (text) => log.push(text),
        },
        {
            open: (address, protocol) => {
                log.push(`open ${new URL(address).pathname} ${protocol}`);
                const socket = new FakeSocket();
                sockets.push(socket);
                return socket as unknown as WebSocket;
            },
            statusOfPage: () => Promise.resolve(status),
            random: () => 0.5,
        },
    );
}

beforeEach(() => {
    vi.useFakeTimers();
    sockets = [];
    log = [];
    status = 0;
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
        sockets[0]?.onmessage?.({ data: 'text' });
        expect(log).toEqual(['open /settings settings.v1', 'opened', 'text']);
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
        expect(log).toEqual(['open /settings settings.v1', 'closed', 'open /settings settings.v1', 'opened']);
    });

    it('is replaced on request, and later frames of the old one are dropped', () => {
        const connection = makeConnection();
        connection.start();
        sockets[0]?.open();
        connection.renew();
        sockets[0]?.onmessage?.({ data: 'late' });
        expect(connection.send('too early')).toBe(false);
        vi.advanceTimersByTime(250);
        sockets[1]?.open();
        sockets[1]?.onmessage?.({ data: 'new' });
        expect(log.slice(1)).toEqual(['opened', 'closed', 'open /settings settings.v1', 'opened', 'new']);
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

    it('reports that the page is unauthorized', async () => {
        const connection = makeConnection();
        connection.start();
        status = 200;
        sockets[0]?.close();
        await vi.advanceTimersByTimeAsync(0);
        expect(log).not.toContain('unauthorized');
        status = 403;
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
