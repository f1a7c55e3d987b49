import type { ChangeEvent, Origin, Values } from '../wire/frames';
import { Session, type Reason } from '../wire/session';

/** What is known about the last new value that this page asked for. */
export type RowStatus =
    | { readonly kind: 'saving' }
    /** `default`: nothing was entered, so that the default applies. */
    | { readonly kind: 'accepted' | 'unchanged' | 'default' }
    | Refused;
export interface Refused {
    readonly kind: 'refused';
    readonly reason: Reason;
}

/** A change that did not come from this page. */
export interface Announcement {
    readonly number: number;
    readonly key: string;
    readonly value: string;
    /** Null when it changed where it lives, in the television. */
    readonly origin: Origin | null;
}

export interface State {
    readonly connection: 'connecting' | 'online' | 'lost' | 'locked-out';
    /** Null until they were read for the first time. */
    readonly values: Values | null;
    readonly rows: Readonly<Record<string, RowStatus>>;
    readonly announcement: Announcement | null;
    readonly selected: boolean | null;
    /** What the last action without a value came to. */
    readonly action: 'none' | 'opened' | 'logged-out' | 'failed';
    /** The setting whose editor is open. */
    readonly editor: string | null;
}

/** What a person is writing over a value, and the value that they know of. */
export interface Draft {
    readonly parts: readonly string[];
    readonly known: string;
}

/** Gathers what to read again for so long, in milliseconds, so that a storm of changes is one question. */
const gatherPause = 50;
/** How long good news stays, in milliseconds. */
export const shownFor = 6_000;

/** The settings as the page knows them. Changes are shown at once; what comes back decides. */
export class Store {
    state: State = {
        connection: 'connecting',
        values: null,
        rows: {},
        announcement: null,
        selected: null,
        action: 'none',
        editor: null,
    };
    /** Unfinished texts by setting, kept while the person looks at another section. */
    readonly drafts = new Map<string, Draft>();
    private readonly listeners = new Set<() => void>();
    private readonly session: Session;
    private readonly toRead = new Map<string, Origin | null>();
    /** How often each setting was set: of several new values on their way only the last one's outcome counts. */
    private readonly attempts = new Map<string, number>();
    /** New values of which nobody knows whether they arrived. */
    private readonly unanswered = new Map<string, string>();
    private readTimer: ReturnType<typeof setTimeout> | null = null;
    private actionTimer: ReturnType<typeof setTimeout> | undefined;

    /**
     * `onSilence` is called when the host did not answer in time. Changes of keys that are no setting for `isSetting` are no
     * business of a person.
     */
    constructor(
        send: (frame: string) => boolean,
        onSilence: () => void = () => undefined,
        private readonly isSetting: (key: string) => boolean = () => true,
    ) {
        this.session = new Session(send, {
            changed: (change) => {
                this.heard(change);
            },
            reread: (keys) => {
                this.readSoon(keys, null);
            },
            missed: () => {
                void this.readAll();
            },
            silent: onSilence,
        });
    }

    /** Returns: what ends the subscription. */
    subscribe(listener: () => void): () => void {
        this.listeners.add(listener);
        return () => this.listeners.delete(listener);
    }

    opened(): void {
        this.session.opened();
        void this.readAll();
        void this.session.isSelected().then((selected) => {
            if (selected !== null) {
                this.update({ selected });
            }
        });
    }

    closed(): void {
        this.session.closed();
        if (this.state.connection !== 'locked-out') {
            this.update({ connection: 'lost' });
        }
    }

    lockedOut(): void {
        this.update({ connection: 'locked-out' });
    }

    received(text: string): void {
        this.session.received(text);
    }

    /** Asks for a new value. It is shown at once, and taken back when it is refused. `isDefault`: nothing else was entered. */
    async set(key: string, to: string, isDefault = false): Promise<void> {
        const before = this.state.values?.[key];
        const attempt = (this.attempts.get(key) ?? 0) + 1;
        this.attempts.set(key, attempt);
        this.unanswered.delete(key);
        this.tell(key, { kind: 'saving' });
        this.show(key, to);
        const outcome = await this.session.set(key, to);
        if (this.attempts.get(key) !== attempt) {
            return;
        }
        if (outcome.result === 'refused' && outcome.reason === 'no-answer') {
            this.unanswered.set(key, to);
        }
        // Without an answer the value from before stands until it is read again.
        this.show(key, outcome.value ?? before);
        if (outcome.result === 'refused') {
            this.tell(key, { kind: 'refused', reason: outcome.reason });
        } else {
            this.tell(key, { kind: isDefault ? 'default' : outcome.result });
        }
    }

    /** Says that a person left a value as it is. */
    tellUnchanged(key: string): void {
        this.tell(key, { kind: 'unchanged' });
    }

    openEditor(key: string): void {
        this.update({ editor: key });
    }

    closeEditor(key: string): void {
        if (this.state.editor === key) {
            this.update({ editor: null });
        }
    }

    forgetStatus(key: string): void {
        if (this.state.rows[key] !== undefined && this.state.rows[key].kind !== 'saving') {
            const { [key]: _gone, ...rows } = this.state.rows;
            this.update({ rows });
        }
    }

    openSettings(): void {
        this.did(this.session.openSettings() ? 'opened' : 'failed');
    }

    async logOut(): Promise<void> {
        const sent = this.session.logOut();
        // The reply comes when the log-out is done.
        const values = sent ? await this.session.read() : null;
        if (values !== null) {
            this.drafts.clear();
            this.update({ values, rows: {}, editor: null });
        }
        this.did(values === null ? 'failed' : 'logged-out');
    }

    forgetAction(): void {
        this.did('none');
    }

    private did(action: State['action']): void {
        clearTimeout(this.actionTimer);
        this.update({ action });
        if (action === 'opened' || action === 'logged-out') {
            this.actionTimer = setTimeout(() => {
                this.forgetAction();
            }, shownFor);
        }
    }

    /** Good news goes by itself; why something did not work stays until it does. */
    private tell(key: string, status: RowStatus): void {
        this.update({ rows: { ...this.state.rows, [key]: status } });
        if (status.kind !== 'saving' && status.kind !== 'refused') {
            setTimeout(() => {
                if (this.state.rows[key] === status) {
                    this.forgetStatus(key);
                }
            }, shownFor);
        }
    }

    private async readAll(): Promise<void> {
        const values = await this.session.read();
        if (values !== null) {
            this.update({ values, connection: 'online' });
            this.settle(values);
        }
    }

    /** The television answers: what was said of its silence goes. A new value that was not answered may have arrived all the same. */
    private settle(values: Values): void {
        for (const [key, to] of this.unanswered) {
            if (values[key] === to) {
                this.tell(key, { kind: 'accepted' });
            } else {
                this.forgetStatus(key);
            }
        }
        this.unanswered.clear();
        if (this.state.action === 'failed') {
            this.forgetAction();
        }
    }

    private heard(change: ChangeEvent): void {
        if (!this.isSetting(change.key)) {
            return;
        }
        this.show(change.key, change.to);
        this.announce(change.key, change.to, change.origin);
        // The event carries the text as it was asked for, which may read back otherwise.
        this.readSoon([change.key], change.origin);
    }

    private readSoon(keys: readonly string[], origin: Origin | null): void {
        for (const key of keys.filter(this.isSetting)) {
            this.toRead.set(key, origin);
        }
        if (this.toRead.size === 0) {
            return;
        }
        this.readTimer ??= setTimeout(() => {
            this.readTimer = null;
            void this.readGathered();
        }, gatherPause);
    }

    private async readGathered(): Promise<void> {
        const wanted = new Map(this.toRead);
        this.toRead.clear();
        const values = await this.session.read([...wanted.keys()]);
        if (values === null) {
            return;
        }
        for (const [key, origin] of wanted) {
            const changed = this.state.values?.[key] !== values[key];
            if (changed && this.state.rows[key]?.kind !== 'saving') {
                this.show(key, values[key]);
                if (origin === null) {
                    this.announce(key, values[key] ?? '', null);
                }
            }
        }
    }

    private show(key: string, value: string | undefined): void {
        const { [key]: _old, ...others } = this.state.values ?? {};
        this.update({ values: value === undefined ? others : { ...others, [key]: value } });
    }

    private announce(key: string, value: string, origin: Origin | null): void {
        this.forgetStatus(key);
        this.unanswered.delete(key);
        this.update({
            announcement: { number: (this.state.announcement?.number ?? 0) + 1, key, value, origin },
        });
    }

    private update(change: Partial<State>): void {
        this.state = { ...this.state, ...change };
        for (const listener of this.listeners) {
            listener();
        }
    }
}
