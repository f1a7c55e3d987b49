import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { attemptPatience, Connection, pauseBefore } from './connection';

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
            lockedOut: note('locked out'),
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
    it('tells what happens and sends while it is open', () => {
        const connection = makeConnection();
        connection.start();
        expect(connection.send('early')).toBe(false);
        sockets[0]?.open();
        expect(connection.send('hello')).toBe(true);
        sockets[0]?.onmessage?.({ data: 'text' });
        expect(log).toEqual(['open /settings settings.v1', 'opened', 'text']);
        expect(sockets[0]?.sent).toEqual(['hello']);
    });

    it('comes back after pauses that grow to ten seconds, and starts anew after a success', async () => {
        const connection = makeConnection();
        connection.start();
        const pauses: number[] = [];
        for (let attempt = 0; attempt < 8; attempt += 1) {
            const before = Date.now();
            const count = sockets.length;
            sockets.at(-1)?.close();
            while (sockets.length === count) {
                await vi.advanceTimersByTimeAsync(10);
            }
            pauses.push(Date.now() - before);
        }
        expect(pauses).toEqual([250, 500, 1000, 2000, 4000, 8000, 10_000, 10_000]);
        sockets.at(-1)?.open();
        const before = sockets.length;
        sockets.at(-1)?.close();
        await vi.advanceTimersByTimeAsync(250);
        expect(sockets.length).toBe(before + 1);
    });

    it('tries at once when asked to, once', () => {
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

    it('gives up an attempt that leads nowhere', () => {
        const connection = makeConnection();
        connection.start();
        vi.advanceTimersByTime(attemptPatience - 1);
        expect(sockets[0]?.readyState).toBe(0);
        vi.advanceTimersByTime(1);
        expect(sockets[0]?.readyState).toBe(3);
        vi.advanceTimersByTime(250);
        sockets[0]?.open();
        sockets[1]?.open();
        expect(log).toEqual(['open /settings settings.v1', 'closed', 'open /settings settings.v1', 'opened']);
    });

    it('is made anew on request, and what the old one still brings is dropped', () => {
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

    it('stays away once it is stopped', () => {
        const connection = makeConnection();
        connection.start();
        connection.stop();
        connection.retryNow();
        vi.advanceTimersByTime(60_000);
        expect(sockets.length).toBe(1);
    });

    it('finds out that the page is locked out', async () => {
        const connection = makeConnection();
        connection.start();
        status = 200;
        sockets[0]?.close();
        await vi.advanceTimersByTimeAsync(0);
        expect(log).not.toContain('locked out');
        status = 403;
        connection.retryNow();
        sockets[1]?.close();
        await vi.advanceTimersByTimeAsync(0);
        expect(log.slice(-2)).toEqual(['closed', 'locked out']);
    });
});

describe('pauses', () => {
    it('differ by a quarter, so that many pages do not come back at the same moment', () => {
        expect([pauseBefore(1, 0), pauseBefore(1, 1)]).toEqual([188, 313]);
        expect([pauseBefore(20, 0), pauseBefore(20, 1)]).toEqual([7500, 12_500]);
    });
});
