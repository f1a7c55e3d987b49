import { isSetting, type SettingKey } from '../settings/catalogue';
import { rulesOf } from '../settings/rules';
import type { ChangeEvent, Origin, Values } from '../wire/frames';
import { Session, type Reason, type SessionObserver } from '../wire/session';

/** The state of the last change of a setting by this page. */
export type RowStatus =
    | { readonly kind: 'saving' }
    /** `default`: nothing was entered, so the default was set. */
    | { readonly kind: 'accepted' | 'unchanged' | 'default' }
    | Refused;
export interface Refused {
    readonly kind: 'refused';
    readonly reason: Reason;
}

/** A change by somebody else. */
export interface Announcement {
    readonly number: number;
    readonly key: SettingKey;
    readonly value: string;
    /** Null when it changed at its owner, without an event. */
    readonly origin: Origin | null;
}

export interface State {
    readonly connection: 'connecting' | 'online' | 'lost' | 'unauthorized';
    /** Null until they have been read once. */
    readonly values: Values | null;
    readonly rows: Readonly<Record<string, RowStatus>>;
    readonly announcement: Announcement | null;
    readonly selected: boolean | null;
    /** The result of the last action that is not a change of a setting. */
    readonly action: 'none' | 'opened' | 'logged-out' | 'failed';
    /** The setting whose editor is open. */
    readonly editor: SettingKey | null;
}

/** An unsaved edit, and the value that the person edited. */
export interface Draft {
    readonly parts: readonly string[];
    readonly known: string;
}

/** How long keys to read again are collected, in milliseconds, so that many changes cause one request. */
const readDelay = 50;
/** How long a message of success is shown, in milliseconds. */
export const messageDuration = 6_000;

/** The settings as the page knows them. A change is shown at once and taken back when the host refuses it. */
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
    /** Unsaved edits by setting, kept while another section is shown. */
    readonly drafts = new Map<SettingKey, Draft>();
    private readonly observers = new Set<() => void>();
    private readonly session: Session;
    private readonly pendingReads = new Map<SettingKey, Origin | null>();
    /** The number of changes of each setting: while several are under way, only the last outcome counts. */
    private readonly attempts = new Map<string, number>();
    /** New values without a reply, which may have arrived. */
    private readonly unconfirmed = new Map<SettingKey, string>();
    private readTimer: ReturnType<typeof setTimeout> | null = null;
    private actionTimer: ReturnType<typeof setTimeout> | undefined;

    /** `onTimeout` is called when a reply did not come in time. */
    constructor(send: (frame: string) => boolean, onTimeout: () => void = () => undefined) {
        const observer: SessionObserver = {
            changed: (change) => {
                this.handleChange(change);
            },
            reread: (keys) => {
                this.scheduleRead(keys, null);
            },
            missed: () => {
                void this.readAll();
            },
            timedOut: onTimeout,
        };
        this.session = new Session(send, observer, rulesOf);
    }

    /** Returns: a function that ends the subscription. */
    subscribe(observer: () => void): () => void {
        this.observers.add(observer);
        return () => this.observers.delete(observer);
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
        if (this.state.connection !== 'unauthorized') {
            this.update({ connection: 'lost' });
        }
    }

    unauthorized(): void {
        this.update({ connection: 'unauthorized' });
    }

    received(text: string): void {
        this.session.received(text);
    }

    /** Requests a new value. `isDefault`: it is the default because nothing was entered. */
    async set(key: SettingKey, to: string, isDefault = false): Promise<void> {
        const before = this.state.values?.[key];
        const attempt = (this.attempts.get(key) ?? 0) + 1;
        this.attempts.set(key, attempt);
        this.unconfirmed.delete(key);
        this.setStatus(key, { kind: 'saving' });
        this.show(key, to);
        const outcome = await this.session.set(key, to);
        if (this.attempts.get(key) !== attempt) {
            return;
        }
        if (outcome.result === 'refused' && outcome.reason === 'no-reply') {
            this.unconfirmed.set(key, to);
        }
        // Without a reply the old value is shown until the setting is read again.
        this.show(key, outcome.value ?? before);
        if (outcome.result === 'refused') {
            this.setStatus(key, { kind: 'refused', reason: outcome.reason });
        } else {
            this.setStatus(key, { kind: isDefault ? 'default' : outcome.result });
        }
    }

    /** Notes that a person saved the value as it was. */
    markUnchanged(key: SettingKey): void {
        this.setStatus(key, { kind: 'unchanged' });
    }

    openEditor(key: SettingKey): void {
        this.update({ editor: key });
    }

    closeEditor(key: SettingKey): void {
        if (this.state.editor === key) {
            this.update({ editor: null });
        }
    }

    clearStatus(key: SettingKey): void {
        if (this.state.rows[key] !== undefined && this.state.rows[key].kind !== 'saving') {
            const { [key]: _gone, ...rows } = this.state.rows;
            this.update({ rows });
        }
    }

    openSettings(): void {
        this.setAction(this.session.openSettings() ? 'opened' : 'failed');
    }

    async logOut(): Promise<void> {
        const sent = this.session.logOut();
        // The reply comes when the log-out is done.
        const values = sent ? await this.session.read() : null;
        if (values !== null) {
            this.drafts.clear();
            this.update({ values, rows: {}, editor: null });
        }
        this.setAction(values === null ? 'failed' : 'logged-out');
    }

    clearAction(): void {
        this.setAction('none');
    }

    private setAction(action: State['action']): void {
        clearTimeout(this.actionTimer);
        this.update({ action });
        if (action === 'opened' || action === 'logged-out') {
            this.actionTimer = setTimeout(() => {
                this.clearAction();
            }, messageDuration);
        }
    }

    /** A success is cleared after a while; a refusal stays until the next change. */
    private setStatus(key: SettingKey, status: RowStatus): void {
        this.update({ rows: { ...this.state.rows, [key]: status } });
        if (status.kind !== 'saving' && status.kind !== 'refused') {
            setTimeout(() => {
                if (this.state.rows[key] === status) {
                    this.clearStatus(key);
                }
            }, messageDuration);
        }
    }

    private async readAll(): Promise<void> {
        const values = await this.session.read();
        if (values !== null) {
            this.update({ values, connection: 'online' });
            this.resolveUnconfirmed(values);
        }
    }

    /** The host replies again: clears what was shown about missing replies. A value without a reply may have arrived. */
    private resolveUnconfirmed(values: Values): void {
        for (const [key, to] of this.unconfirmed) {
            if (values[key] === to) {
                this.setStatus(key, { kind: 'accepted' });
            } else {
                this.clearStatus(key);
            }
        }
        this.unconfirmed.clear();
        if (this.state.action === 'failed') {
            this.clearAction();
        }
    }

    private handleChange(change: ChangeEvent): void {
        const { key, to, origin } = change;
        if (!isSetting(key)) {
            return;
        }
        this.show(key, to);
        this.announce(key, to, origin);
        // The event carries the requested text; GetSettings may report another.
        this.scheduleRead([key], origin);
    }

    private scheduleRead(keys: readonly string[], origin: Origin | null): void {
        for (const key of keys.filter(isSetting)) {
            this.pendingReads.set(key, origin);
        }
        if (this.pendingReads.size === 0) {
            return;
        }
        this.readTimer ??= setTimeout(() => {
            this.readTimer = null;
            void this.readPending();
        }, readDelay);
    }

    private async readPending(): Promise<void> {
        const wanted = new Map(this.pendingReads);
        this.pendingReads.clear();
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

    private show(key: SettingKey, value: string | undefined): void {
        const { [key]: _old, ...others } = this.state.values ?? {};
        this.update({ values: value === undefined ? others : { ...others, [key]: value } });
    }

    private announce(key: SettingKey, value: string, origin: Origin | null): void {
        this.clearStatus(key);
        this.unconfirmed.delete(key);
        this.update({
            announcement: { number: (this.state.announcement?.number ?? 0) + 1, key, value, origin },
        });
    }

    private update(change: Partial<State>): void {
        this.state = { ...this.state, ...change };
        for (const observer of this.observers) {
            observer();
        }
    }
}
