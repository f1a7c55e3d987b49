import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { shownFor, Store } from './store';

interface Sent {
    readonly type: number;
    readonly messageId: string;
    readonly payload?: { readonly settings?: string[]; readonly settingDBId?: string; readonly to?: string };
}

/** A host that keeps values and answers at once, except while it is told to be silent. */
class FakeHost {
    values: Record<string, string> = { deviceName: 'TV', captionsEnabled: 'false', timezone: 'UTC' };
    refused = new Set<string>();
    silent = false;
    connected = true;
    sequence = 0;
    requests: string[] = [];
    silences = 0;
    readonly store = new Store(
        (frame) => this.take(JSON.parse(frame) as Sent),
        () => {
            this.silences += 1;
        },
        (key) => !key.startsWith('x'),
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
    it('knows every value once the connection is open', () => {
        expect(store.state.connection).toBe('online');
        expect(store.state.values).toEqual(host.values);
        expect(store.state.selected).toBe(true);
    });

    it('shows a new value at once, and that it was accepted when it was', async () => {
        const done = store.set('deviceName', 'Den');
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'saving' });
        await done;
        expect(store.state.rows['deviceName']).toEqual({ kind: 'accepted' });
        expect(store.state.announcement).toBeNull();
        expect(host.requests).toEqual(['set deviceName', 'get deviceName']);
    });

    it('takes a refused value back and says why', async () => {
        host.refused.add('deviceName');
        await store.set('deviceName', 'Den');
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason: 'not-taken' });
    });

    it('tells that nothing changed', async () => {
        await store.set('deviceName', 'TV');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'unchanged' });
    });

    it('takes a value back when no answer comes', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        await vi.advanceTimersByTimeAsync(4_999);
        expect(host.silences).toBe(0);
        await vi.advanceTimersByTimeAsync(1);
        await done;
        expect(host.silences).toBe(1);
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason: 'no-answer' });
    });

    it('says that a value without an answer was saved, once it is read back', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        store.closed();
        await done;
        expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason: 'no-answer' });
        host.silent = false;
        host.values['deviceName'] = 'Den';
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'accepted' });
    });

    it('says no more that the television does not answer once it does', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        store.closed();
        host.connected = false;
        store.openSettings();
        await done;
        expect(store.state).toMatchObject({
            rows: { deviceName: { kind: 'refused', reason: 'no-answer' } },
            action: 'failed',
        });
        host.connected = true;
        host.silent = false;
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state).toMatchObject({ connection: 'online', rows: {}, action: 'none' });
    });

    it('takes good news back after a while, but not why something did not work', async () => {
        const kinds = () => Object.entries(store.state.rows).map(([key, { kind }]) => `${key} ${kind}`);
        host.refused.add('captionsEnabled');
        store.openSettings();
        await store.set('deviceName', 'Den');
        await store.set('timezone', 'UTC');
        await store.set('captionsEnabled', 'true');
        await vi.advanceTimersByTimeAsync(shownFor - 1);
        expect(kinds()).toEqual(['deviceName accepted', 'timezone unchanged', 'captionsEnabled refused']);
        expect(store.state.action).toBe('opened');
        void store.set('deviceName', 'Attic');
        await vi.advanceTimersByTimeAsync(1);
        expect(kinds()).toEqual(['deviceName accepted', 'captionsEnabled refused']);
        expect(store.state.action).toBe('none');
        await vi.advanceTimersByTimeAsync(shownFor);
        expect(kinds()).toEqual(['captionsEnabled refused']);
    });

    it('says that the default applies where nothing was entered, whether that is new or not', async () => {
        await store.set('timezone', 'UTC', true);
        await store.set('deviceName', 'TV two', true);
        expect(store.state.rows).toEqual({ timezone: { kind: 'default' }, deviceName: { kind: 'default' } });
    });

    it('leaves keys alone that are no settings', async () => {
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

    it('says nothing of a value without an answer after somebody else wrote another', async () => {
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

    it('keeps showing the last of several new values while those before it are answered', async () => {
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

    it('announces what others change, and reads it back', async () => {
        host.event('deviceName', '', 'socket');
        expect(store.state.announcement).toEqual({ number: 1, key: 'deviceName', value: '', origin: 'socket' });
        host.values['deviceName'] = 'TV';
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.announcement?.number).toBe(1);
        host.event('timezone', 'Europe/Paris', 'device');
        expect(store.state.announcement).toMatchObject({ number: 2, key: 'timezone', origin: 'device' });
    });

    it('announces what a notice names, if it is different', async () => {
        host.values['captionsEnabled'] = 'true';
        host.say({ notice: { reread: ['captionsEnabled', 'timezone'] } });
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state.values?.['captionsEnabled']).toBe('true');
        expect(store.state.announcement).toEqual({ number: 1, key: 'captionsEnabled', value: 'true', origin: null });
    });

    it('asks once for a storm of changes', async () => {
        for (let number = 0; number < 100; number += 1) {
            host.event(number % 2 === 0 ? 'deviceName' : 'timezone', `${number}`, 'socket');
        }
        await vi.advanceTimersByTimeAsync(50);
        expect(host.requests).toEqual(['get deviceName,timezone']);
    });

    it('reads everything again when it missed an event', async () => {
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

    it('forgets what it said about a row when somebody else changes it', async () => {
        await store.set('deviceName', 'Den');
        host.event('deviceName', 'Attic', 'socket');
        expect(store.state.rows).toEqual({});
    });

    it('says that the connection is lost, keeps the values, and reads them when it is back', async () => {
        store.closed();
        expect(store.state.connection).toBe('lost');
        expect(store.state.values?.['deviceName']).toBe('TV');
        host.values['deviceName'] = 'Den';
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state.connection).toBe('online');
        expect(store.state.values?.['deviceName']).toBe('Den');
    });

    it('stays locked out until a connection opens', async () => {
        store.lockedOut();
        store.closed();
        expect(store.state.connection).toBe('locked-out');
        store.opened();
        await vi.advanceTimersByTimeAsync(0);
        expect(store.state.connection).toBe('online');
    });

    it('logs out and shows what is left', async () => {
        await store.set('deviceName', 'Den');
        store.drafts.set('deviceName', { parts: ['Attic'], known: 'Den' });
        await store.logOut();
        expect(store.state).toMatchObject({ action: 'logged-out', values: { deviceName: 'TV' }, rows: {} });
        expect(store.drafts.size).toBe(0);
        await vi.advanceTimersByTimeAsync(shownFor);
        expect(store.state.action).toBe('none');
        host.connected = false;
        await store.logOut();
        expect(store.state.action).toBe('failed');
        store.openSettings();
        expect(store.state.action).toBe('failed');
    });

    it('tells its listeners until they leave', () => {
        let calls = 0;
        const leave = store.subscribe(() => {
            calls += 1;
        });
        store.openSettings();
        leave();
        store.openSettings();
        expect(calls).toBe(1);
    });
});
