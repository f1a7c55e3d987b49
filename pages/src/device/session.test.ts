import { afterEach, beforeEach, expect, test, vi } from 'vitest';

import { localesIn } from './commands';
import type { Trace } from './messages';
import { DeviceSession, refreshDelay } from './session';

const enableTraces = '{"command":"trace","enabled":true}';
const refresh = '{"command":"show"}';

let sent: string[];
let changes: number;
let session: DeviceSession;

beforeEach(() => {
    vi.useFakeTimers();
    sent = [];
    changes = 0;
    session = new DeviceSession(
        (text) => sent.push(text),
        () => (changes += 1),
    );
});

afterEach(() => {
    vi.useRealTimers();
});

function open(): void {
    session.opened();
    session.received('{"ok":true}');
    session.received('{"device":{"timezone":"Asia/Tokyo"}}');
    sent = [];
}

function receiveTrace(trace: Partial<Trace>): void {
    const whole = { timestamp: 1, direction: 'in', door: 'socket', client: 1, text: '{"type":24}', ...trace };
    session.received(JSON.stringify({ trace: whole }));
}

function listed(): string[] {
    return session.view().messages.map(({ text }) => text);
}

test('a new connection asks for traces and the state', () => {
    session.opened();
    expect(sent).toEqual([enableTraces, refresh]);
    expect(session.deviceState).toBeNull();
    session.received('{"ok":true}');
    session.received('{"device":{"timezone":"Asia/Tokyo","locales":"[\\"ja-JP\\"]"}}');
    expect(session.deviceState).toEqual({ timezone: 'Asia/Tokyo', locales: '["ja-JP"]' });
    expect(changes).toBe(1);
});

test('commands get their replies in order, with traces between them', async () => {
    open();
    const first = session.run({ command: 'captions', enabled: true });
    const second = session.run({ command: 'fly' });
    receiveTrace({});
    session.received('{"ok":true}');
    receiveTrace({});
    session.received('{"error":{"code":"unknown-command","message":"no such command"}}');
    expect(await first).toEqual({ ok: true });
    expect(await second).toEqual({ ok: false, code: 'unknown-command', message: 'no such command' });
    expect(sent).toEqual(['{"command":"captions","enabled":true}', '{"command":"fly"}', refresh, refresh]);
});

test('an unchanged value is passed on', async () => {
    open();
    const outcome = session.run({ command: 'setting', key: 'deviceName', value: 'Den' });
    session.received('{"ok":true,"changed":false}');
    expect(await outcome).toEqual({ ok: true, changed: false });
});

test('the state is requested after a command', async () => {
    open();
    const outcome = session.run({ command: 'timezone', value: 'Europe/Rome' });
    session.received('{"ok":true}');
    await outcome;
    session.received('{"device":{"timezone":"Europe/Rome"}}');
    expect(session.deviceState).toEqual({ timezone: 'Europe/Rome' });
});

test('the state is requested once after a burst of traces', () => {
    open();
    for (let count = 0; count < 50; count += 1) {
        receiveTrace({});
    }
    expect(sent).toEqual([]);
    vi.advanceTimersByTime(refreshDelay);
    expect(sent).toEqual([refresh]);
    vi.advanceTimersByTime(refreshDelay * 10);
    expect(sent).toEqual([refresh]);
});

test('a malformed trace is neither listed nor taken for a reply', async () => {
    open();
    const outcome = session.run({ command: 'captions', enabled: true });
    session.received('{"trace":{"direction":"sideways"}}');
    session.received('{"ok":true}');
    expect(await outcome).toEqual({ ok: true });
    expect(listed()).toEqual([]);
});

test('a lost connection fails pending commands and keeps messages and state', async () => {
    open();
    receiveTrace({ text: 'kept' });
    const outcome = session.run({ command: 'captions', enabled: true });
    session.closed();
    expect(await outcome).toMatchObject({ ok: false, code: 'no-reply' });
    expect(await session.run({ command: 'captions', enabled: true })).toMatchObject({
        ok: false,
        code: 'no-connection',
    });
    vi.advanceTimersByTime(refreshDelay * 10);
    expect(sent).toEqual(['{"command":"captions","enabled":true}']);
    expect(listed()).toEqual(['kept']);
    expect(session.deviceState).toEqual({ timezone: 'Asia/Tokyo' });
});

test('after a reconnect a reply belongs to the new command', async () => {
    open();
    void session.run({ command: 'captions', enabled: true });
    session.closed();
    open();
    const outcome = session.run({ command: 'fly' });
    session.received('{"error":{"code":"unknown-command","message":"no"}}');
    expect(await outcome).toMatchObject({ code: 'unknown-command' });
});

test('a reply of an unknown form is an error', async () => {
    open();
    const outcome = session.run({ command: 'captions', enabled: true });
    session.received('{"error":"no"}');
    expect(await outcome).toMatchObject({ ok: false, code: 'unknown-reply' });
});

test('locales may be separated by commas and blanks', () => {
    expect(localesIn(' fr-FR, en-US\nde-DE ,')).toEqual(['fr-FR', 'en-US', 'de-DE']);
    expect(localesIn(' ')).toEqual([]);
});

test('pausing and clearing show at once', () => {
    open();
    changes = 0;
    session.pause(true);
    receiveTrace({ text: 'waits' });
    expect(session.view()).toMatchObject({ messages: [], paused: true, waiting: 1 });
    session.clear();
    session.pause(false);
    expect(session.view()).toMatchObject({ messages: [], paused: false });
    expect(changes).toBe(4);
});
