import { isSetting, type SettingKey, type ValueOf } from './catalogue.js';
import { Connection, type Environment } from './connection.js';
import {
    eventsOf,
    keysIn,
    number,
    outcomeOf,
    parseFrame,
    refused,
    valuesOf,
    type ChangeEvent,
    type EventFrame,
    type Members,
    type Outcome,
    type Refusal,
    type Reply,
    type Values,
} from './frames.js';
import { messageType } from './messageTypes.js';

/** `unauthorized`: the key is missing or old. `unsupported`: the host is older than version 1.1. */
export type Status = 'connecting' | 'online' | 'lost' | 'unauthorized' | 'unsupported';

/** A change of a setting that this client did not make. */
export interface Change {
    readonly key: SettingKey;
    /** The value now; undefined when there is none. */
    readonly value: string | undefined;
    /**
     * Null when the value may have changed at its owner, without an event. An event may come twice: at once with the value that
     * it announced, then with that which the host reports, when it is another one.
     */
    readonly event: ChangeEvent | null;
}

export interface Observer {
    readonly status?: (status: Status) => void;
    /** Every value: once connected, and after a reconnection that could not be without a gap. */
    readonly loaded?: (values: Values) => void;
    readonly changed?: (change: Change) => void;
    /** Every event, of changes by this client, too: each once and in order, unless `loaded` says that some were missed. */
    readonly event?: (event: ChangeEvent) => void;
}

export interface Options extends Observer {
    /** The name of this client, which others see beside its changes: 1 to 64 characters without control characters. */
    readonly name?: string;
    /** The address that `settingsctl page` prints; by default that of the page. */
    readonly address?: string;
}

/** How long a reply may take, in milliseconds. */
export const replyTimeout = 5_000;
/** How long keys to read again are collected, in milliseconds, so that many changes cause one request. */
export const readDelay = 50;
/** The limits of the host. */
const maxFrameSize = 65_536;
const maxBatch = 64;

/** A new value of a setting. */
export type NewValue = {
    readonly [Key in SettingKey]: {
        readonly key: Key;
        readonly to: ValueOf<Key>;
    };
}[SettingKey];

interface PendingRequest {
    readonly done: (reply: Reply | Refusal | null) => void;
    readonly timer: ReturnType<typeof setTimeout>;
}

/**
 * The settings of a host. It reconnects by itself and goes on without a gap. A request while there is no connection, or one
 * without a reply in time, resolves with null or `no-reply`; no request rejects.
 */
export class Client {
    /** The version of the wire that the host speaks; null until it has said so. */
    version: string | null = null;
    readonly #connection: Connection;
    #status: Status = 'connecting';
    /** Requests without a reply, in the order of their frames. */
    readonly #pending = new Map<string, PendingRequest>();
    /** Changes of this client whose events have not come. */
    readonly #writes = new Set<{
        readonly key: string;
        readonly to: string;
    }>();
    /** Keys to read, and the event that is the reason. */
    readonly #unread = new Map<SettingKey, ChangeEvent | null>();
    #readTimer: ReturnType<typeof setTimeout> | undefined;
    #lastId = 0;
    #newestTimestamp = 0;
    /** The run of the host of which every event up to `sequence` is known; null when every value must be read. */
    #run: string | null = null;
    #sequence = 0;
    /** The values, if they were requested with the greeting. */
    #reading: Promise<Values | null> | null = null;
    /** Whether the host has answered who it is, so that the next event follows `sequence`. */
    #isGreeted = false;
    readonly #options: Options;

    constructor(options: Options, environment?: Environment) {
        if (options.name !== undefined && !/^\P{Cc}{1,64}$/u.test(options.name)) {
            throw new RangeError('a client name has 1 to 64 characters, no control characters');
        }
        this.#options = options;
        const observer = {
            opened: () => {
                this.#greet();
            },
            received: (text: string) => {
                this.#received(text);
            },
            closed: () => {
                this.#closed();
            },
            unauthorized: () => {
                this.#setStatus('unauthorized');
            },
        };
        const address = options.address ?? location.href;
        this.#connection = new Connection(address, '/settings', 'settings.v1', observer, environment);
        this.#connection.start();
    }

    /** Ends the connection for good. */
    close(): void {
        this.#connection.stop();
    }

    /** Connects at once instead of after the delay, when the connection is lost. */
    retryNow(): void {
        this.#connection.retryNow();
    }

    /** The values of `keys`, or of every setting when there are none. */
    async read(keys: readonly SettingKey[] = []): Promise<Values | null> {
        const reply = await this.#request({ type: messageType.getSettings, payload: { settings: keys } });
        return reply && valuesOf(reply);
    }

    async set<Key extends SettingKey>(key: Key, to: ValueOf<Key>): Promise<Outcome> {
        const [outcome] = await this.#write([{ key, to }], (requests) => requests[0]);
        return outcome ?? refused('unknown');
    }

    /** Up to 64 changes with nobody in between. Each has its own outcome; when the storage fails, it takes none. */
    batch(changes: readonly NewValue[]): Promise<Outcome[]> {
        return this.#write(changes, (batch) => ({ batch }));
    }

    /** The newest events of the host's run, of one setting or all, oldest first. `limit`: 1 to 1,024. */
    async history(limit?: number, key?: SettingKey): Promise<ChangeEvent[] | null> {
        const reply = await this.#request({ history: { settingDBId: key, limit } });
        return reply && eventsOf(reply);
    }

    /** Whether this assistant is the selected one. */
    async isSelected(): Promise<boolean | null> {
        const reply = await this.#request({ type: messageType.isSelected });
        return reply && reply.body['isOrliaSelectedAsVA'] === true;
    }

    /** Opens the assistant's settings on the device. Resolves with whether that was done. */
    openSettings(): Promise<boolean | null> {
        return this.#act(messageType.openSettings);
    }

    /** Erases the stored settings. Resolves with whether that was done. */
    logOut(): Promise<boolean | null> {
        return this.#act(messageType.logOut);
    }

    async #act(type: number): Promise<boolean | null> {
        const reply = await this.#request({ type, answer: true });
        return reply && reply.body['outcome'] === 'done';
    }

    async #write(
        changes: readonly { readonly key: SettingKey; readonly to: string }[],
        wrap: (requests: readonly Members[]) => Members | undefined,
    ): Promise<Outcome[]> {
        const timestamp = this.#nextTimestamp();
        const requests = changes.map(({ key, to }) => ({
            type: messageType.setSettings,
            messageId: this.#nextId(),
            timestamp,
            answer: true,
            payload: { settingDBId: key, to },
        }));
        const frame = JSON.stringify(wrap(requests));
        if (
            requests.length === 0 ||
            requests.length > maxBatch ||
            new TextEncoder().encode(frame).length > maxFrameSize
        ) {
            return changes.map(() => refused('too-long'));
        }
        const ids = requests.map(({ messageId }) => messageId);
        const writes = changes.map((change) => ({ ...change }));
        writes.forEach((write) => this.#writes.add(write));
        const replies = await Promise.all(this.#exchange(frame, ids));
        const outcomes = replies.map((reply, index) => this.#outcomeOf(reply, changes[index]?.key));
        writes.forEach((write) => this.#writes.delete(write));
        return outcomes;
    }

    #outcomeOf(reply: Reply | null, key: SettingKey | undefined): Outcome {
        if (reply !== null) {
            // After `stale` the next attempt is newer.
            this.#newestTimestamp = Math.max(this.#newestTimestamp, number(reply.body['newest']));
            return outcomeOf(reply);
        }
        if (key !== undefined) {
            this.#unread.set(key, null);
        }
        return refused('no-reply');
    }

    async #request(members: Members): Promise<Reply | null> {
        const messageId = this.#nextId();
        return this.#exchange(JSON.stringify({ ...members, messageId }), [messageId])[0] ?? null;
    }

    /** Sends a frame that is replied to by these ids. Null when no reply came, or a refusal. */
    #exchange(frame: string, ids: readonly string[]): Promise<Reply | null>[] {
        const replies = ids.map(
            (id) =>
                new Promise<Reply | null>((resolve) => {
                    this.#expect(id, (reply) => {
                        resolve(reply?.kind === 'reply' ? reply : null);
                    });
                }),
        );
        if (!this.#isSupported() || !this.#connection.send(frame)) {
            ids.forEach((id) => {
                this.#finish(id, null);
            });
        }
        return replies;
    }

    #isSupported(): boolean {
        return this.#status !== 'unsupported';
    }

    #expect(id: string, done: PendingRequest['done']): void {
        const timer = setTimeout(() => {
            this.#finish(id, null);
            // The connection may be dead.
            this.#connection.renew();
        }, replyTimeout);
        this.#pending.set(id, { done, timer });
    }

    #finish(id: string | undefined, reply: Reply | Refusal | null): void {
        const request = this.#pending.get(id ?? '');
        if (id !== undefined && request !== undefined) {
            this.#pending.delete(id);
            clearTimeout(request.timer);
            request.done(reply);
        }
    }

    /** Tells the host who this is, and how far it knows its events. */
    #greet(): void {
        this.#isGreeted = false;
        const run = this.#run;
        const sequence = this.#sequence;
        const hello = { client: this.#options.name, resume: run === null ? undefined : { run, sequence } };
        const messageId = this.#nextId();
        this.#expect(messageId, (reply) => {
            if (reply?.kind === 'reply') {
                this.#greeted(reply.body);
            } else if (reply?.code === 'unknown-type') {
                this.#setStatus('unsupported');
            } else if (reply !== null) {
                // Too much to resume.
                this.#run = null;
                this.#connection.renew();
            }
        });
        this.#connection.send(JSON.stringify({ messageId, hello }));
        // In the same go, because a page waits for them. The host answers in order: they are newer than `sequence`.
        this.#reading = run === null ? this.read() : null;
    }

    #greeted({ version, run, sequence, missed, reread }: Members): void {
        this.version = String(version);
        this.#isGreeted = true;
        this.#sequence = number(sequence);
        if (this.#reading === null && missed === false) {
            this.#setStatus('online');
            this.#scheduleRead(keysIn(reread), null);
        } else {
            this.#run = null;
            void this.#load(String(run), this.#reading ?? this.read());
        }
    }

    async #load(run: string, reading: Promise<Values | null>): Promise<void> {
        this.#unread.clear();
        const values = await reading;
        if (values !== null) {
            this.#run = run;
            this.#options.loaded?.(values);
            this.#setStatus('online');
        }
    }

    #received(text: string): void {
        const frame = parseFrame(text);
        switch (frame?.kind) {
            case 'reply':
                this.#finish(frame.messageId, frame);
                break;
            case 'event':
                this.#handleEvent(frame);
                break;
            case 'notice':
                this.#scheduleRead(frame.keys, null);
                break;
            case 'refusal':
                // The host replies in the order of the requests.
                this.#finish(this.#pending.keys().next().value, frame);
                break;
        }
    }

    #handleEvent({ kind: _kind, key, ...members }: EventFrame): void {
        const { sequence } = members;
        this.#newestTimestamp = Math.max(this.#newestTimestamp, members.timestamp);
        if (sequence !== this.#sequence + 1) {
            // Until the host has answered, all events since `sequence` are still to come, in order.
            if (this.#isGreeted && sequence > this.#sequence) {
                this.#greet();
            }
            return;
        }
        this.#sequence = sequence;
        const event = isSetting(key) ? { key, ...members } : null;
        if (event !== null) {
            this.#options.event?.(event);
        }
        for (const write of this.#writes) {
            const isOwn = members.origin === 'page' && members.client === (this.#options.name ?? null);
            if (isOwn && write.key === key && write.to === members.to) {
                this.#writes.delete(write);
                return;
            }
        }
        if (event !== null) {
            this.#options.changed?.({ key: event.key, value: event.to, event });
            // The event carries the requested text; the host may report another value.
            this.#scheduleRead([event.key], event);
        }
    }

    #scheduleRead(keys: readonly SettingKey[], event: ChangeEvent | null): void {
        for (const key of keys) {
            this.#unread.set(key, event);
        }
        if (this.#unread.size > 0) {
            this.#readTimer ??= setTimeout(() => {
                this.#readTimer = undefined;
                void this.#readUnread();
            }, readDelay);
        }
    }

    async #readUnread(): Promise<void> {
        const wanted = new Map(this.#unread);
        this.#unread.clear();
        const values = await this.read([...wanted.keys()]);
        for (const [key, event] of wanted) {
            if (values === null) {
                // For the next connection.
                this.#unread.set(key, this.#unread.has(key) ? null : event);
            } else if (event === null || event.to !== values[key]) {
                this.#options.changed?.({ key, value: values[key], event });
            }
        }
    }

    #closed(): void {
        for (const id of [...this.#pending.keys()]) {
            this.#finish(id, null);
        }
        if (this.#status !== 'unauthorized') {
            this.#setStatus('lost');
        }
    }

    #setStatus(status: Status): void {
        if (this.#status !== status) {
            this.#status = status;
            this.#options.status?.(status);
        }
    }

    #nextId(): string {
        this.#lastId += 1;
        return `page-${this.#lastId}`;
    }

    /** The host refuses requests that are older than the newest one that it saw, whichever clock is right. */
    #nextTimestamp(): number {
        this.#newestTimestamp = Math.max(this.#newestTimestamp, Date.now());
        return this.#newestTimestamp;
    }
}

/** Connects to a host, and tells the observer in `options` what happens. `environment` replaces the browser's in tests. */
export function connect(options: Options = {}, environment?: Environment): Client {
    return new Client(options, environment);
}
