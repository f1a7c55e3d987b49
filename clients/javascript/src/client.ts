import {
    getFrame,
    isTooLong,
    parseFrame,
    plainFrame,
    setFrame,
    valuesOf,
    type ChangeEvent,
    type Reply,
    type Values,
} from './frames';
import { messageType } from './messageTypes';

/** Why a new value was refused. */
export type Reason = 'read-only' | 'wrong-form' | 'too-long' | 'not-applied' | 'overwritten' | 'no-reply';

/** The result of a change, and the value afterwards as far as it is known. */
export type Outcome =
    | { readonly result: 'accepted' | 'unchanged'; readonly value: string }
    | { readonly result: 'refused'; readonly reason: Reason; readonly value: string | null };

export interface SessionObserver {
    /** Another client changed a value, or it changed at its owner. */
    readonly changed: (change: ChangeEvent) => void;
    /** A notice: these values may have changed. */
    readonly reread: (keys: readonly string[]) => void;
    /** Events were missed: any value may have changed. */
    readonly missed: () => void;
    /** A reply did not come in time: the connection may be dead. */
    readonly timedOut?: () => void;
}

/** How the host treats new values of a setting. */
export interface SettingRules {
    /** The device alone changes it. */
    readonly isReadOnly: boolean;
    /** The host announces a new value before its owner has applied it, so that the event alone does not mean success. */
    readonly mayRevertAfterEvent: boolean;
    readonly isWellFormed: (value: string) => boolean;
}

/** How long a reply may take, in milliseconds. */
export const replyTimeout = 5_000;

interface Write {
    readonly key: string;
    readonly to: string;
    /** The newest event of the setting since the request: the wanted value, or another one. */
    seen: 'nothing' | 'wanted' | 'other';
    /** Another event came after the one with the wanted value. */
    followed: boolean;
}

interface PendingRequest {
    readonly resolve: (reply: Reply | null) => void;
    readonly timer: ReturnType<typeof setTimeout>;
}

/**
 * Requests and replies over one connection, and the outcome of each change. Owns no socket: its owner reports when the
 * connection opens and closes, and hands over each frame.
 */
export class Session {
    private readonly pending = new Map<string, PendingRequest>();
    private readonly writes = new Set<Write>();
    private lastId = 0;
    private newestTimestamp = 0;
    private lastSequence: number | null = null;

    constructor(
        private readonly send: (frame: string) => boolean,
        private readonly observer: SessionObserver,
        private readonly rulesOf: (key: string) => SettingRules,
        private readonly now: () => number = Date.now,
    ) {}

    opened(): void {
        this.lastSequence = null;
    }

    closed(): void {
        for (const id of [...this.pending.keys()]) {
            this.finish(id, null);
        }
    }

    /** The values of `keys`, or of every setting when empty; null when no reply came. */
    async read(keys: readonly string[] = []): Promise<Values | null> {
        const reply = await this.request((id) => getFrame(id, keys));
        return reply === null ? null : valuesOf(reply);
    }

    /** Whether this assistant is the selected one; null when no reply came. */
    async isSelected(): Promise<boolean | null> {
        const reply = await this.request((id) => plainFrame(messageType.isSelected, id));
        return reply === null ? null : reply.payload['isOrliaSelectedAsVA'] === true;
    }

    /** Returns: false when there is no connection. */
    openSettings(): boolean {
        return this.send(plainFrame(messageType.openSettings, this.nextId()));
    }

    logOut(): boolean {
        return this.send(plainFrame(messageType.logOut, this.nextId()));
    }

    /**
     * Requests a new value and determines the outcome. The handler sends an event for a change and nothing otherwise, so the
     * value is read afterwards.
     */
    async set(key: string, to: string): Promise<Outcome> {
        const request = setFrame(this.nextId(), this.nextTimestamp(), key, to);
        if (isTooLong(request)) {
            return { result: 'refused', reason: 'too-long', value: null };
        }
        const write: Write = { key, to, seen: 'nothing', followed: false };
        this.writes.add(write);
        const sent = this.send(request);
        const values = sent ? await this.read([key]) : null;
        this.writes.delete(write);
        return this.outcomeOf(write, values);
    }

    received(text: string): void {
        const frame = parseFrame(text);
        switch (frame?.kind) {
            case 'reply':
                this.finish(frame.messageId, frame);
                break;
            case 'event':
                this.handleEvent(frame);
                break;
            case 'notice':
                this.observer.reread(frame.keys);
                break;
            default:
                // A refusal of a frame: the read after it returns the value.
                break;
        }
    }

    private outcomeOf({ key, to, seen, followed }: Write, values: Values | null): Outcome {
        if (values === null) {
            return { result: 'refused', reason: 'no-reply', value: null };
        }
        const value = values[key] ?? '';
        const rules = this.rulesOf(key);
        if (seen === 'wanted') {
            if (rules.mayRevertAfterEvent && !followed && value !== to) {
                return { result: 'refused', reason: 'not-applied', value };
            }
            return { result: 'accepted', value };
        }
        if (value === to) {
            return { result: 'unchanged', value };
        }
        if (rules.isReadOnly) {
            return { result: 'refused', reason: 'read-only', value };
        }
        if (!rules.isWellFormed(to)) {
            return { result: 'refused', reason: 'wrong-form', value };
        }
        return { result: 'refused', reason: seen === 'other' ? 'overwritten' : 'not-applied', value };
    }

    private handleEvent(event: ChangeEvent): void {
        this.newestTimestamp = Math.max(this.newestTimestamp, event.timestamp);
        const missed = this.lastSequence !== null && event.sequence !== this.lastSequence + 1;
        this.lastSequence = event.sequence;
        let own = false;
        for (const write of this.writes) {
            if (write.key !== event.key) {
                continue;
            }
            if (write.seen === 'wanted') {
                write.followed = true;
            } else {
                write.seen = event.to === write.to ? 'wanted' : 'other';
                own ||= write.seen === 'wanted' && event.origin === 'page';
            }
        }
        if (missed) {
            this.observer.missed();
        } else if (!own) {
            this.observer.changed(event);
        }
    }

    private request(frameFor: (id: string) => string): Promise<Reply | null> {
        const id = this.nextId();
        return new Promise((resolve) => {
            const timer = setTimeout(() => {
                this.finish(id, null);
                this.observer.timedOut?.();
            }, replyTimeout);
            this.pending.set(id, { resolve, timer });
            if (!this.send(frameFor(id))) {
                this.finish(id, null);
            }
        });
    }

    private finish(id: string, reply: Reply | null): void {
        const request = this.pending.get(id);
        if (request !== undefined) {
            this.pending.delete(id);
            clearTimeout(request.timer);
            request.resolve(reply);
        }
    }

    private nextId(): string {
        this.lastId += 1;
        return `page-${this.lastId}`;
    }

    /** The handler drops requests that are older than the newest one it saw, whichever clock is right. */
    private nextTimestamp(): number {
        this.newestTimestamp = Math.max(this.newestTimestamp, this.now());
        return this.newestTimestamp;
    }
}
