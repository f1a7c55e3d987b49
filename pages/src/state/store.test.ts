import { connect } from 'settings-client';
import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { FakeBrowser } from '../../../clients/javascript/src/fakeBrowser.fixture';
import { messageDuration } from './messages';
import { Store } from './store';

interface Sent {
    readonly type?: number;
    readonly messageId: string;
    readonly hello?: { readonly resume?: object };
    readonly history?: object;
    readonly payload?: { readonly settings?: string[]; readonly settingDBId?: string; readonly to?: string };
}

/** The time from one frame to the next, in milliseconds. */
const frameDuration = 20;

/** A host that keeps values and replies at once, except while it is silent. */
class FakeHost {
    values: Record<string, string> = { deviceName: 'TV', captionsEnabled: 'false', timezone: 'UTC' };
    /** What it answers to changes of these keys. */
    answers = new Map<string, object>();
    silent = false;
    sequence = 0;
    requests: string[] = [];
    events: object[] = [];
    private readonly browser = new FakeBrowser();
    readonly store: Store;

    constructor() {
        this.browser.onconnect = (socket) => {
            socket.onsend = (frame) => {
                this.take(JSON.parse(frame) as Sent);
            };
        };
        this.store = new Store((observer) => connect({ ...observer, address: 'http://tv/' }, this.browser));
    }

    /** Connects, up to what is read after the values were drawn. */
    async connect(): Promise<void> {
        this.open();
        await vi.advanceTimersByTimeAsync(frameDuration);
    }

    open(): void {
        this.browser.socket.open();
    }

    close(): void {
        this.browser.socket.close();
    }

    /** Closes the connection and makes the next one. */
    async reconnect(): Promise<void> {
        this.close();
        this.requests = [];
        this.store.retryNow();
        await this.connect();
    }

    event(key: string, to: string, others: object = { origin: 'socket' }): void {
        this.sequence += 1;
        const payload = { settingDBId: key, from: this.values[key] ?? '', to };
        this.values[key] = to;
        const event = { type: 25, timestamp: 1, sequence: this.sequence, ...others, payload };
        this.events.push(event);
        this.say(event);
    }

    say(frame: object): void {
        this.browser.socket.receive(frame);
    }

    private take({ type, messageId, hello, history, payload }: Sent): void {
        if (history !== undefined) {
            queueMicrotask(() => {
                this.say({ messageId, history: { events: this.events } });
            });
            return;
        }
        const { settings = [], settingDBId = '', to = '' } = payload ?? {};
        this.requests.push(
            type === 24 ? `set ${settingDBId}` : type === 7 ? `get ${settings.join()}` : `${type ?? 'hello'}`,
        );
        if (this.silent) {
            return;
        }
        const reply = (body: object) => {
            queueMicrotask(() => {
                this.say({ type, messageId, payload: body });
            });
        };
        if (hello !== undefined) {
            const resumed = hello.resume === undefined ? {} : { missed: false, reread: [] };
            queueMicrotask(() => {
                this.say({ messageId, hello: { run: 'run', sequence: this.sequence, ...resumed } });
            });
        } else if (type === 24) {
            const outcome = this.values[settingDBId] === to ? 'unchanged' : 'changed';
            const refusal = this.answers.get(settingDBId);
            if (refusal === undefined && outcome === 'changed') {
                this.event(settingDBId, to, { origin: 'page' });
            }
            reply({ outcome, value: this.values[settingDBId], ...refusal });
        } else if (type === 18) {
            reply({ isOrliaSelectedAsVA: true });
        } else if (type === 7) {
            const keys = settings.length > 0 ? settings : Object.keys(this.values);
            reply({
                settings: Object.fromEntries(
                    keys.filter((key) => key in this.values).map((key) => [key, this.values[key]]),
                ),
            });
        } else {
            if (type === 22) {
                this.values = { deviceName: 'TV' };
                this.events = [];
            }
            reply({ outcome: 'done', ...this.answers.get(`${type ?? ''}`) });
        }
    }
}

let host: FakeHost;
let store: Store;

beforeEach(async () => {
    vi.useFakeTimers();
    host = new FakeHost();
    store = host.store;
    await host.connect();
    host.requests = [];
});

afterEach(() => {
    vi.useRealTimers();
});

describe('the store', () => {
    it('reads every value when the connection opens, and what can wait after the next frame', async () => {
        expect(store.state.connection).toBe('online');
        expect(store.state.values).toEqual(host.values);
        expect([store.state.selected, store.state.changes]).toEqual([true, []]);
        const other = new FakeHost();
        other.open();
        await vi.advanceTimersByTimeAsync(0);
        expect(other.store.state.values).toEqual(other.values);
        expect(other.requests).toEqual(['hello', 'get ']);
    });

    it('shows a new value at once, and then that it was accepted', async () => {
        const done = store.set('deviceName', 'Den');
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'saving' });
        await done;
        expect(store.state.rows['deviceName']).toEqual({ kind: 'accepted' });
        expect(store.state.messages).toEqual([]);
        expect(host.requests).toEqual(['set deviceName']);
    });

    it('shows the value that the answer has', async () => {
        host.answers.set('deviceName', { value: 'Den two' });
        await store.set('deviceName', 'Den');
        expect(store.state.values?.['deviceName']).toBe('Den two');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'accepted' });
    });

    it.each(['incomplete', 'stale', 'read-only', 'wrong-form', 'not-stored'])(
        'takes a value back that was refused as %s, and shows the reason',
        async (reason) => {
            host.answers.set('deviceName', { outcome: 'refused', reason, value: 'Attic' });
            await store.set('deviceName', 'Den');
            expect(store.state.values?.['deviceName']).toBe('Attic');
            expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason, to: 'Den' });
        },
    );

    it('shows that a change had no effect at the voice SDK or at the device', async () => {
        host.answers.set('friendlyName', { outcome: 'changed', applied: false, value: 'TV' });
        host.answers.set('handsFreeEnabled', { outcome: 'changed', value: 'false' });
        await store.set('friendlyName', 'Telly');
        await store.set('handsFreeEnabled', 'true');
        expect(store.state.values).toMatchObject({ friendlyName: 'TV', handsFreeEnabled: 'false' });
        expect(store.state.rows).toEqual({
            friendlyName: { kind: 'refused', reason: 'not-applied', to: 'Telly' },
            handsFreeEnabled: { kind: 'refused', reason: 'not-applied', to: 'true' },
        });
    });

    it('takes a value back that is too long', async () => {
        await store.set('deviceName', 'x'.repeat(70_000));
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.rows['deviceName']).toMatchObject({ kind: 'refused', reason: 'too-long' });
    });

    it('shows that a value was unchanged', async () => {
        await store.set('deviceName', 'TV');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'unchanged' });
    });

    it('takes a value back when no reply comes', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        await vi.advanceTimersByTimeAsync(5_000);
        await done;
        expect(store.state.connection).toBe('lost');
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason: 'no-reply', to: 'Den' });
    });

    it('shows that a value without a reply was saved, once it is read back', async () => {
        host.silent = true;
        const done = store.set('deviceName', 'Den');
        host.close();
        await done;
        expect(store.state.rows['deviceName']).toEqual({ kind: 'refused', reason: 'no-reply', to: 'Den' });
        host.silent = false;
        host.values['deviceName'] = 'Den';
        await host.reconnect();
        await vi.advanceTimersByTimeAsync(50);
        expect(host.requests).toEqual(['hello', '18', 'get deviceName']);
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.rows['deviceName']).toEqual({ kind: 'accepted' });
        expect(store.state.messages).toEqual([]);
    });

    it('clears messages about missing replies once the host replies', async () => {
        host.close();
        await store.set('deviceName', 'Den');
        await store.openSettings();
        expect(store.state).toMatchObject({
            rows: { deviceName: { kind: 'refused', reason: 'no-reply', to: 'Den' } },
            action: 'failed',
        });
        await host.reconnect();
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state).toMatchObject({ connection: 'online', rows: {}, action: 'none' });
    });

    it('has the recent changes, by whomever, until somebody logs out', async () => {
        const changes = () => store.state.changes?.map(({ key, to }) => `${key} ${to}`);
        expect(changes()).toEqual([]);
        host.event('timezone', 'Asia/Tokyo');
        await store.set('deviceName', 'Den');
        expect(changes()).toEqual(['deviceName Den', 'timezone Asia/Tokyo']);
        host.events = [];
        host.say({ notice: { reread: ['deviceName'] } });
        await vi.advanceTimersByTimeAsync(50);
        expect(changes()).toEqual([]);
        await store.set('deviceName', 'Attic');
        store.searched = 'attic';
        await store.logOut();
        expect([changes(), store.searched]).toEqual([[], '']);
    });

    it('clears messages of success after a while, but not refusals', async () => {
        const kinds = () => Object.entries(store.state.rows).map(([key, { kind }]) => `${key} ${kind}`);
        host.answers.set('captionsEnabled', { outcome: 'refused', reason: 'read-only' });
        await store.openSettings();
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

    it('forgets a value without a reply when somebody else writes another', async () => {
        host.close();
        await store.set('deviceName', 'Den');
        await host.reconnect();
        host.event('deviceName', 'Attic');
        host.values['deviceName'] = 'Den';
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state.rows).toEqual({});
        expect(store.state.messages).toMatchObject([{ value: 'Attic' }]);
    });

    it('keeps showing the last of several new values while the earlier ones are confirmed', async () => {
        const shown: (string | undefined)[] = [];
        const kinds: (string | undefined)[] = [];
        store.subscribe(() => {
            shown.push(store.state.values?.['timezone']);
            kinds.push(store.state.rows['timezone']?.kind);
        });
        const first = store.set('timezone', 'Asia/Tokyo');
        const second = store.set('timezone', 'Europe/Paris');
        await first;
        await second;
        const changesOf = (seen: typeof shown) => seen.filter((one, index) => one !== seen[index - 1]);
        expect(changesOf(shown)).toEqual(['UTC', 'Asia/Tokyo', 'Europe/Paris']);
        expect(changesOf(kinds)).toEqual(['saving', 'accepted']);
    });

    it('does not let an older value replace one that is being saved', async () => {
        host.silent = true;
        void store.set('deviceName', 'Den');
        host.silent = false;
        host.say({ notice: { reread: ['deviceName'] } });
        await vi.advanceTimersByTimeAsync(50);
        expect(host.requests).toEqual(['set deviceName', 'get deviceName']);
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.messages).toEqual([]);
        await vi.advanceTimersByTimeAsync(5_000);
        expect(store.state.values?.['deviceName']).toBe('TV');
    });

    it('announces changes by others, and reads them back', async () => {
        host.event('deviceName', '', { origin: 'page', client: 'phone' });
        expect(store.state.messages).toMatchObject([
            { key: 'deviceName', value: '', event: { origin: 'page', client: 'phone' } },
        ]);
        host.values['deviceName'] = 'TV';
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state.values?.['deviceName']).toBe('TV');
        expect(store.state.messages.length).toBe(1);
        host.event('timezone', 'Europe/Paris', { origin: 'device' });
        expect(store.state.messages[1]).toMatchObject({ key: 'timezone', event: { client: null } });
    });

    it('announces a setting of a notice if its value is different', async () => {
        host.values['captionsEnabled'] = 'true';
        host.say({ notice: { reread: ['captionsEnabled', 'timezone'] } });
        await vi.advanceTimersByTimeAsync(50);
        expect(store.state.values?.['captionsEnabled']).toBe('true');
        expect(store.state.messages).toMatchObject([{ key: 'captionsEnabled', value: 'true', event: null }]);
    });

    it('clears the status of a row when somebody else changes it', async () => {
        await store.set('deviceName', 'Den');
        host.event('deviceName', 'Attic');
        expect(store.state.rows).toEqual({});
    });

    it('shows that the connection is lost, keeps the values, and announces what changed meanwhile', async () => {
        host.close();
        expect(store.state.connection).toBe('lost');
        expect(store.state.values?.['deviceName']).toBe('TV');
        await host.reconnect();
        expect(store.state.connection).toBe('online');
        expect(host.requests).toEqual(['hello', '18']);
        host.event('deviceName', 'Den', { origin: 'socket', client: 'settingsctl' });
        expect(store.state.values?.['deviceName']).toBe('Den');
        expect(store.state.messages).toMatchObject([{ value: 'Den', event: { client: 'settingsctl' } }]);
    });

    it('shows the remaining values after a log-out', async () => {
        await store.set('deviceName', 'Den');
        store.drafts.set('deviceName', { parts: ['Attic'], known: 'Den' });
        await store.logOut();
        expect(store.state).toMatchObject({ action: 'logged-out', values: { deviceName: 'TV' }, rows: {} });
        expect(store.drafts.size).toBe(0);
        await vi.advanceTimersByTimeAsync(messageDuration);
        expect(store.state.action).toBe('none');
    });

    it('distinguishes an action that the host refused from one without a reply', async () => {
        host.answers.set('22', { outcome: 'refused', reason: 'not-stored' });
        await store.logOut();
        expect(store.state).toMatchObject({ action: 'refused', values: { deviceName: 'TV' } });
        host.close();
        await store.logOut();
        expect(store.state.action).toBe('failed');
        store.clearAction();
        await store.openSettings();
        expect(store.state.action).toBe('failed');
    });

    it('notifies observers until they unsubscribe', () => {
        let calls = 0;
        const unsubscribe = store.subscribe(() => {
            calls += 1;
        });
        store.openEditor('deviceName');
        unsubscribe();
        store.openEditor('timezone');
        expect(calls).toBe(1);
    });
});
