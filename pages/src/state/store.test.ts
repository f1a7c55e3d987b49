import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { messageDuration, Store } from './store';

interface Sent {
    readonly type: number;
    readonly messageId: string;
    readonly payload?: { readonly settings?: string[]; readonly settingDBId?: string; readonly to?: string };
}

/** A host that keeps values and replies at once, except while it is silent. */
class FakeHost {
    values: Record<string, string> = { deviceName: 'TV', captionsEnabled: 'false', timezone: 'UTC' };
    refused = new Set<string>();
    silent = false;
    connected = true;
    sequence = 0;
    requests: string[] = [];
    timeouts = 0;
    readonly store = new Store(
        (frame) => this.take(JSON.parse(frame) as Sent),
        () => {
            this.timeouts += 1;
        },
    );

    event(key: string, to: string, origin: string): void {
        this.sequence += 1;
        const payload = { settingDBId: key, from: this.values[key] ?? '', to };
        this.values[key] = to;
        this.say({ type: 25, timestamp: 1, sequence: this.sequence, origin, payload });
    }

    say(frame: object): void {
        this.store.received(JSON.stringify(frame));
    }

    private take({ type, messageId, payload }: Sent): boolean {
        if (!this.connected) {
            return false;
        }
        const { settings = [], settingDBId = '', to = '' } = payload ?? {};
        this.requests.push(type === 24 ? `set ${settingDBId}` : type === 7 ? `get ${settings.join()}` : `${type}`);
        if (this.silent) {
            return true;
        }
        if (type === 24 && !this.refused.has(settingDBId) && this.values[settingDBId] !== to) {
            this.event(settingDBId, to, 'page');
        } else if (type === 22) {
            this.values = { deviceName: 'TV' };
        } else if (type === 18) {
            queueMicrotask(() => {
                this.say({ type, messageId, payload: { isOrliaSelectedAsVA: true } });
            });
        } else if (type === 7) {
            const keys = settings.length > 0 ? settings : Object.keys(this.values);
            const found = Object.fromEntries(
                keys.filter((key) => key in this.values).map((key) => [key, this.values[key]]),
            );
            queueMicrotask(() => {
                this.say({ type, messageId, payload: { settings: found } });
            });
        }
        return true;
    }
}

let host: FakeHost;
let store: Store;

beforeEach(async () => {
    vi.useFakeTimers();
    host = new FakeHost();
    store = host.store;
    store.opened();
    await vi.advanceTimersByTimeAsync(0);
    host.requests = [];
});

afterEach(() => {
    vi.useRealTimers();
});

describe('the store', () => {
    it('reads every value when the connection opens', () => {
        expect(store.state.connection).toBe('online');
        expect(store.state.values).toEqual(host.values);
        expect(store.state.selected).toBe(true);
    });

    it('shows a new value at once, and then that it was accepted', async () => {
        const done = store.set('deviceName', 'Den');
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'saving' });
        await done;
        expect(store.state.rows['deviceName']).toEqual({ kind: 'accepted' });
        expect(store.state.announcement).toBeNull();
        expect(host.requests).toEqual(['set deviceName', 'get deviceName']);
    });

    it('takes a refused value back and shows the reason', async () => {
        host.refused.add('deviceName');
        await store.set('deviceName', 'Den');
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason: 'not-applied' });
    });

    it('shows that a value was unchanged', async () => {
        await store.set('deviceName', 'TV');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'unchanged' });
    });

    it('takes a value back when no reply comes', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        await vi.advanceTimersByTimeAsync(4_999);
        expect(host.timeouts).toBe(0);
        await vi.advanceTimersByTimeAsync(1);
        await done;
        expect(host.timeouts).toBe(1);
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason: 'no-reply' });
    });

    it('shows that a value without a reply was saved, once it is read back', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        store.closed();
        await done;
        expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason: 'no-reply' });
        host.silent = false;
        host.values['deviceName'] = 'Den';
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'accepted' });
    });

    it('clears messages about missing replies once the host replies', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        store.closed();
        host.connected = false;
        store.openSettings();
        await done;
        expect(store.state).toMatchObject({
            rows: { deviceName: { kind: 'refused', reason: 'no-reply' } },
            action: 'failed',
        });
        host.connected = true;
        host.silent = false;
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state).toMatchObject({ connection: 'online', rows: {}, action: 'none' });
    });

    it('clears messages of success after a while, but not refusals', async () => {
        const kinds = () => Object.entries(store.state.rows).map(([key, { kind }]) => `${key} ${kind}`);
        host.refused.add('captionsEnabled');
        store.openSettings();
        await store.set('deviceName', 'Den');
        await store.set('timezone', 'UTC');
        await store.set('captionsEnabled', 'true');
        await vi.advanceTimersByTimeAsync(messageDuration - 1);
        expect(kinds()).toEqual(['deviceName accepted', 'timezone unchanged', 'captionsEnabled refused']);
        expect(store.state.action).toBe('opened');
        void store.set('deviceName', 'Attic');
        await vi.advanceTimersByTimeAsync(1);
        expect(kinds()).toEqual(['deviceName accepted', 'captionsEnabled refused']);
        expect(store.state.action).toBe('none');
        await vi.advanceTimersByTimeAsync(messageDuration);
        expect(kinds()).toEqual(['captionsEnabled refused']);
    });

    it('shows that the default was set where nothing was entered, whether that is a change or not', async () => {
        await store.set('timezone', 'UTC', true);
        await store.set('deviceName', 'TV two', true);
        expect(store.state.rows).toEqual({ timezone: { kind: 'default' }, deviceName: { kind: 'default' } });
    });

    it('ignores keys that the catalogue does not have', async () => {
        host.event('deviceName', 'Den', 'socket');
        await vi.advanceTimersByTimeAsync(50);
        host.requests = [];
        host.event('xUnknown', 'text', 'socket');
        host.say({ notice: { reread: ['xUnknown'] } });
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state.announcement).toMatchObject({ number: 1, key: 'deviceName' });
        expect(store.state.values).not.toHaveProperty('xUnknown');
        expect(host.requests).toEqual([]);
    });

    it('forgets a value without a reply when somebody else writes another', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        store.closed();
        await done;
        host.silent = false;
        store.opened();
        host.event('deviceName', 'Attic', 'socket');
        await vi.advanceTimersByTimeAsync(50);
        host.values['deviceName'] = 'Den';
        store.closed();
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state.rows).toEqual({});
    });

    it('keeps showing the last of several new values while the earlier ones are confirmed', async () => {
        const shown: (string | undefined)[] = [];
        const kinds: (string | undefined)[] = [];
        store.subscribe(() => {
            shown.push(store.state.values?.['timezone']);
            kinds.push(store.state.rows['timezone']?.kind);
        });
        host.refused.add('timezone');
        const first = store.set('timezone', 'Asia/Tokyo');
        host.refused.clear();
        const second = store.set('timezone', 'Europe/Paris');
        await first;
        await second;
        expect(shown).toEqual(['UTC', 'Asia/Tokyo', 'Asia/Tokyo', 'Europe/Paris', 'Europe/Paris', 'Europe/Paris']);
        expect(kinds).toEqual(['saving', 'saving', 'saving', 'saving', 'saving', 'accepted']);
    });

    it('does not let an older value replace one that is being saved', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        host.silent = false;
        host.say({ notice: { reread: ['deviceName'] } });
        await vi.advanceTimersByTimeAsync(50);
        expect(host.requests).toEqual(['set deviceName', 'get deviceName', 'get deviceName']);
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.announcement).toBeNull();
        await vi.advanceTimersByTimeAsync(5_000);
        await done;
        expect(store.state.values?.['deviceName']).toBe('TV');
    });

    it('announces changes by others, and reads them back', async () => {
        host.event('deviceName', '', 'socket');
        expect(store.state.announcement).toEqual({ number: 1, key: 'deviceName', value: '', origin: 'socket' });
        host.values['deviceName'] = 'TV';
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.announcement?.number).toBe(1);
        host.event('timezone', 'Europe/Paris', 'device');
        expect(store.state.announcement).toMatchObject({ number: 2, key: 'timezone', origin: 'device' });
    });

    it('announces a setting of a notice if its value is different', async () => {
        host.values['captionsEnabled'] = 'true';
        host.say({ notice: { reread: ['captionsEnabled', 'timezone'] } });
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state.values?.['captionsEnabled']).toBe('true');
        expect(store.state.announcement).toEqual({ number: 1, key: 'captionsEnabled', value: 'true', origin: null });
    });

    it('reads once after many changes', async () => {
        for (let number = 0; number < 100; number += 1) {
            host.event(number % 2 === 0 ? 'deviceName' : 'timezone', `${number}`, 'socket');
        }
        await vi.advanceTimersByTimeAsync(50);
        expect(host.requests).toEqual(['get deviceName,timezone']);
    });

    it('reads everything again after a missed event', async () => {
        host.event('deviceName', 'Den', 'socket');
        await vi.advanceTimersByTimeAsync(50);
        host.requests = [];
        host.sequence += 1;
        host.values['captionsEnabled'] = 'true';
        host.event('timezone', 'Asia/Tokyo', 'socket');
        await vi.advanceTimersByTimeAsync(50);
        expect(host.requests).toEqual(['get ']);
        expect(store.state.values).toEqual(host.values);
    });

    it('clears the status of a row when somebody else changes it', async () => {
        await store.set('deviceName', 'Den');
        host.event('deviceName', 'Attic', 'socket');
        expect(store.state.rows).toEqual({});
    });

    it('shows that the connection is lost, keeps the values, and reads them when it is back', async () => {
        store.closed();
        expect(store.state.connection).toBe('lost');
        expect(store.state.values?.['deviceName']).toBe('TV');
        host.values['deviceName'] = 'Den';
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state.connection).toBe('online');
        expect(store.state.values?.['deviceName']).toBe('Den');
    });

    it('stays unauthorized until a connection opens', async () => {
        store.unauthorized();
        store.closed();
        expect(store.state.connection).toBe('unauthorized');
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state.connection).toBe('online');
    });

    it('shows the remaining values after a log-out', async () => {
        await store.set('deviceName', 'Den');
        store.drafts.set('deviceName', { parts: ['Attic'], known: 'Den' });
        await store.logOut();
        expect(store.state).toMatchObject({ action: 'logged-out', values: { deviceName: 'TV' }, rows: {} });
        expect(store.drafts.size).toBe(0);
        await vi.advanceTimersByTimeAsync(messageDuration);
        expect(store.state.action).toBe('none');
        host.connected = false;
        await store.logOut();
        expect(store.state.action).toBe('failed');
        store.openSettings();
        expect(store.state.action).toBe('failed');
    });

    it('notifies observers until they unsubscribe', () => {
        let calls = 0;
        const unsubscribe = store.subscribe(() => {
            calls += 1;
        });
        store.openSettings();
        unsubscribe();
        store.openSettings();
        expect(calls).toBe(1);
    });
});
