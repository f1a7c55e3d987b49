import {
    getFrame,
    isTooLong,
    messageType,
    parseFrame,
    plainFrame,
    setFrame,
    valuesOf,
    type ChangeEvent,
    type Reply,
    type Values,
} from './frames';

/** Why a new value was not taken. */
export type Reason = 'read-only' | 'format' | 'too-long' | 'not-taken' | 'overtaken' | 'no-answer';

/** What became of a new value, and what the value is now, as far as it is known. */
export type Outcome =
    | { readonly result: 'accepted' | 'unchanged'; readonly value: string }
    | { readonly result: 'refused'; readonly reason: Reason; readonly value: string | null };

export interface SessionEvents {
    /** Somebody else changed a value, or it changed where it lives. */
    readonly changed: (change: ChangeEvent) => void;
    /** The host says that these may have changed. */
    readonly reread: (keys: readonly string[]) => void;
    /** Events were missed: everything may have changed. */
    readonly missed: () => void;
    /** A question was not answered in time: the host may be gone without having said so. */
    readonly silent?: () => void;
}

/** How long an answer may take, in milliseconds. */
export const patience = 5_000;

const readOnlyKeys = new Set(['captionsEnabled', 'doNotDisturbEnabled']);
const switchKeys = new Set(['handsFreeEnabled', 'handsFreeAlwaysOnEnabled', 'pttAlwaysOnEnabled']);

interface Write {
    readonly key: string;
    readonly to: string;
    seen: 'nothing' | 'wanted' | 'other';
    /** Somebody else wrote after the wanted value was announced. */
    followed: boolean;
}

interface Question {
    readonly answer: (reply: Reply | null) => void;
    readonly timer: ReturnType<typeof setTimeout>;
}

function isLocaleList(value: string): boolean {
    try {
        const list: unknown = JSON.parse(value);
        return Array.isArray(list) && list.some((locale) => typeof locale === 'string' && locale !== '');
    } catch {
        return false;
    }
}

/**
 * The conversation with the handler over one connection: questions and their answers, new values and what became of
 * them. Knows no socket: it is told when the connection opens and closes and what comes.
 */
export class Session {
    private readonly questions = new Map<string, Question>();
    private readonly writes = new Set<Write>();
    private lastId = 0;
    private newestTimestamp = 0;
    private lastSequence: number | null = null;

    constructor(
        private readonly send: (frame: string) => boolean,
        private readonly events: SessionEvents,
        private readonly now: () => number = Date.now,
    ) {}

    opened(): void {
        this.lastSequence = null;
    }

    closed(): void {
        for (const id of [...this.questions.keys()]) {
            this.finish(id, null);
        }
    }

    /** The values of `keys`, of every setting when empty; null when no answer came. */
    async read(keys: readonly string[] = []): Promise<Values | null> {
        const reply = await this.ask((id) => getFrame(id, keys));
        return reply === null ? null : valuesOf(reply);
    }

    /** Whether this assistant is the selected one; null when no answer came. */
    async isSelected(): Promise<boolean | null> {
        const reply = await this.ask((id) => plainFrame(messageType.isSelected, id));
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
     * Asks for a new value and finds out what became of it: the handler answers a change with an event and everything else
     * with silence, so the value is read afterwards.
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
                this.heard(frame);
                break;
            case 'notice':
                this.events.reread(frame.keys);
                break;
            default:
                // A refusal of a frame: the question after it tells what the value is.
                break;
        }
    }

    private outcomeOf({ key, to, seen, followed }: Write, values: Values | null): Outcome {
        if (values === null) {
            return { result: 'refused', reason: 'no-answer', value: null };
        }
        const value = values[key] ?? '';
        if (seen === 'wanted') {
            // A switch that the device would not throw is announced all the same.
            if (switchKeys.has(key) && !followed && value !== to) {
                return { result: 'refused', reason: 'not-taken', value };
            }
            return { result: 'accepted', value };
        }
        if (value === to) {
            return { result: 'unchanged', value };
        }
        if (readOnlyKeys.has(key)) {
            return { result: 'refused', reason: 'read-only', value };
        }
        if (key === 'orliaLocale' && !isLocaleList(to)) {
            return { result: 'refused', reason: 'format', value };
        }
        return { result: 'refused', reason: seen === 'other' ? 'overtaken' : 'not-taken', value };
    }

    private heard(event: ChangeEvent): void {
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
            this.events.missed();
        } else if (!own) {
            this.events.changed(event);
        }
    }

    private ask(frameFor: (id: string) => string): Promise<Reply | null> {
        const id = this.nextId();
        return new Promise((resolve) => {
            const timer = setTimeout(() => {
                this.finish(id, null);
                this.events.silent?.();
            }, patience);
            this.questions.set(id, { answer: resolve, timer });
            if (!this.send(frameFor(id))) {
                this.finish(id, null);
            }
        });
    }

    private finish(id: string, reply: Reply | null): void {
        const question = this.questions.get(id);
        if (question !== undefined) {
            this.questions.delete(id);
            clearTimeout(question.timer);
            question.answer(reply);
        }
    }

    private nextId(): string {
        this.lastId += 1;
        return `page-${this.lastId}`;
    }

    /** The handler drops what is older than the newest it saw, whoever's clock is right. */
    private nextTimestamp(): number {
        this.newestTimestamp = Math.max(this.newestTimestamp, this.now());
        return this.newestTimestamp;
    }
}
