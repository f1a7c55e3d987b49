import { afterEach, beforeEach, expect, test, vi } from 'vitest';

import { answerTime } from './exchanges';
import { DeviceStore, refreshDelay } from './store';

const enableTraces = '{"command":"trace","enabled":true}';
const refresh = ['{"command":"show"}', '{"command":"faults"}'];
const fault = { name: 'slow', kind: 'switch', on: true, description: 'd' };

let sent: string[];
let changes: number;
let store: DeviceStore;

beforeEach(() => {
    vi.useFakeTimers();
    history.replaceState(null, '', location.pathname);
    [sent, changes] = [[], 0];
    store = new DeviceStore(
        (text) => sent.push(text),
        () => (changes += 1),
    );
});

afterEach(() => {
    vi.useRealTimers();
});

function receive(...frames: readonly object[]): void {
    for (const frame of frames) {
        store.session.received(JSON.stringify(frame));
    }
}

/** Connects to a host that knows one fault. */
function open(): void {
    store.opened();
    receive({ device: { timezone: 'Asia/Tokyo' } }, { faults: [fault] }, { ok: true });
    sent = [];
}

function receiveTrace(text = '{"type":24}'): void {
    receive({ trace: { timestamp: 1, direction: 'in', door: 'socket', client: 1, text } });
}

const listed = () => store.messages.messages.map(({ text }) => text);

test('a new connection asks for the state and the faults, then for traces', () => {
    store.opened();
    expect(sent).toEqual([...refresh, enableTraces]);
    expect(store.view).toMatchObject({ connection: 'connected', state: null, faults: [] });
    receive({ device: { timezone: 'Asia/Tokyo', locales: '["ja-JP"]' } }, { faults: [fault] });
    expect(store.view.state).toEqual({ timezone: 'Asia/Tokyo', locales: '["ja-JP"]' });
    expect(store.view.faults).toMatchObject([{ name: 'slow', on: true }]);
});

test('a host without faults is asked once a connection', () => {
    store.opened();
    receive({ device: {} }, { error: { code: 'unknown-command', message: 'no' } }, { ok: true });
    sent = [];
    receiveTrace();
    vi.advanceTimersByTime(refreshDelay);
    expect(sent).toEqual(['{"command":"show"}']);
    expect(store.view.faults).toEqual([]);
    store.closed();
    store.opened();
    expect(sent.slice(1)).toEqual([...refresh, enableTraces]);
});

test('the result of a command is shown, and state and faults are requested', () => {
    open();
    store.run({ command: 'timezone', value: 'Europe/Rome' });
    receive({ ok: true }, { device: { timezone: 'Europe/Rome' } });
    expect(store.view.result).toEqual({ words: 'timezone Europe/Rome: done', refused: false });
    expect(store.view.state).toEqual({ timezone: 'Europe/Rome' });
    expect(sent.slice(1)).toEqual(refresh);
});

test('a reply of an unknown form is shown as refused', () => {
    open();
    store.run({ command: 'captions', enabled: true });
    receive({ surprise: 1 });
    expect(store.view.result?.refused).toBe(true);
});

test('the state is requested once after a burst of traces', () => {
    open();
    for (let count = 0; count < 50; count += 1) {
        receiveTrace();
    }
    expect(sent).toEqual([]);
    vi.advanceTimersByTime(refreshDelay * 10);
    expect(sent).toEqual(refresh);
});

test('a lost connection fails commands and keeps messages, state and faults', () => {
    open();
    receiveTrace('kept');
    store.run({ command: 'captions', enabled: true });
    store.closed();
    expect(store.view.result).toMatchObject({ words: expect.stringContaining('no-reply') as string, refused: true });
    store.run({ command: 'captions', enabled: true });
    expect(store.view.result?.words).toBe('captions on: refused, no-connection: the host cannot be reached');
    vi.advanceTimersByTime(refreshDelay * 10);
    expect(sent).toHaveLength(1);
    expect(listed()).toEqual(['kept']);
    expect(store.view).toMatchObject({ connection: 'lost', state: { timezone: 'Asia/Tokyo' }, faults: [{ on: true }] });
});

test('the page is drawn again when an answer should have come', () => {
    open();
    receiveTrace();
    vi.advanceTimersByTime(refreshDelay);
    changes = 0;
    vi.advanceTimersByTime(answerTime - refreshDelay);
    expect(changes).toBe(1);
});

test('pausing and clearing show at once', () => {
    open();
    changes = 0;
    store.pause(true);
    receiveTrace('waits');
    expect(store.messages).toMatchObject({ messages: [], paused: true, waiting: 1 });
    store.clear();
    store.pause(false);
    expect(store.messages).toMatchObject({ messages: [], paused: false });
    expect(changes).toBe(4);
});

test('the filter is kept in the address, and read from it', () => {
    const filter = { text: 'a', setting: 'timezone', type: 'event', client: null } as const;
    store.filter(filter);
    expect(location.hash).toBe('#text=a&setting=timezone&type=event');
    expect(
        new DeviceStore(
            () => undefined,
            () => undefined,
        ).view.filter,
    ).toEqual(filter);
    location.hash = '#type=batch';
    store.readAddress();
    expect(store.view.filter).toMatchObject({ text: '', type: 'batch' });
});
