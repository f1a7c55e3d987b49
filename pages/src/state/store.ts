import {
    catalogue,
    type Change,
    type Client,
    type Observer,
    type Outcome,
    type Reason,
    type SettingKey,
    type Status,
    type Values,
} from 'settings-client';

import { afterPaint } from './afterPaint';
import { History, type Changes } from './history';
import { messageDuration, MessageQueue, type Message } from './messages';

/** The state of the last change of a setting by this page. */
export type RowStatus =
    | { readonly kind: 'saving' }
    /** `default`: nothing was entered, so the default was set. */
    | { readonly kind: 'accepted' | 'unchanged' | 'default' }
    | Refused;
export interface Refused {
    readonly kind: 'refused';
    /** The value that was refused. */
    readonly to: string;
    /** `not-applied`: announced, without effect. */
    readonly reason: Reason | 'not-applied';
}

export interface State {
    readonly connection: Status;
    /** Null until they have been read once. */
    readonly values: Values | null;
    readonly rows: Readonly<Partial<Record<SettingKey, RowStatus>>>;
    /** The first is shown, the others wait. */
    readonly messages: readonly Message[];
    readonly changes: Changes;
    readonly selected: boolean | null;
    /** The result of the last action that is not a change of a setting. */
    readonly action: 'none' | 'opened' | 'logged-out' | 'failed' | 'refused';
    /** The setting whose editor is open. */
    readonly editor: SettingKey | null;
}

/** An unsaved edit, and the value that the person edited. */
export interface Draft {
    readonly parts: readonly string[];
    readonly known: string;
}

/** The settings as the page knows them. A change is shown at once and taken back when the host refuses it. */
export class Store {
    state: State = {
        connection: 'connecting',
        values: null,
        rows: {},
        messages: [],
        changes: null,
        selected: null,
        action: 'none',
        editor: null,
    };
    /** Unsaved edits by setting, kept while another section is shown. */
    readonly drafts = new Map<SettingKey, Draft>();
    /** What was typed into the search. */
    searched = '';
    readonly #observers = new Set<() => void>();
    readonly #client: Client;
    /** The number of changes of each setting: while several are under way, only the last outcome counts. */
    readonly #attempts = new Map<SettingKey, number>();
    /** New values without a reply, which may have arrived. */
    readonly #unconfirmed = new Map<SettingKey, string>();
    readonly #history = new History(
        (limit) => this.#client.history(limit),
        (changes) => {
            this.#update({ changes });
        },
    );
    readonly #messages = new MessageQueue((messages) => {
        this.#update({ messages });
    });
    #actionTimer: ReturnType<typeof setTimeout> | undefined;

    constructor(connect: (observer: Observer) => Client) {
        this.#client = connect({
            status: (connection) => {
                this.#handleStatus(connection);
            },
            loaded: (values) => {
                this.#handleValues(values);
            },
            event: (event) => {
                this.#history.add(event);
            },
            changed: (change) => {
                this.#handleChange(change);
            },
        });
    }

    /** Returns: a function that ends the subscription. */
    subscribe(observer: () => void): () => void {
        this.#observers.add(observer);
        return () => this.#observers.delete(observer);
    }

    /** Requests a new value. `isDefault`: it is the default because nothing was entered. */
    async set(key: SettingKey, to: string, isDefault = false): Promise<void> {
        const before = this.state.values?.[key];
        const attempt = (this.#attempts.get(key) ?? 0) + 1;
        this.#attempts.set(key, attempt);
        this.#unconfirmed.delete(key);
        this.#setStatus(key, { kind: 'saving' });
        this.#show(key, to);
        const outcome = await this.#client.set(key, to);
        if (this.#attempts.get(key) !== attempt) {
            return;
        }
        const reason = reasonOf(key, to, outcome);
        if (reason === 'no-reply') {
            this.#unconfirmed.set(key, to);
        }
        // Without a reply the old value is shown until the setting is read again.
        this.#show(key, reason === 'no-reply' || reason === 'too-long' ? before : outcome.value);
        if (reason !== null) {
            this.#setStatus(key, { kind: 'refused', reason, to });
        } else {
            this.#setStatus(key, {
                kind: isDefault ? 'default' : outcome.outcome === 'changed' ? 'accepted' : 'unchanged',
            });
        }
    }

    /** Notes that a person saved the value as it was. */
    markUnchanged(key: SettingKey): void {
        this.#setStatus(key, { kind: 'unchanged' });
    }

    openEditor(key: SettingKey): void {
        this.#update({ editor: key });
    }

    closeEditor(key: SettingKey): void {
        if (this.state.editor === key) {
            this.#update({ editor: null });
        }
    }

    clearStatus(key: SettingKey): void {
        if (this.state.rows[key] !== undefined && this.state.rows[key].kind !== 'saving') {
            const { [key]: _gone, ...rows } = this.state.rows;
            this.#update({ rows });
        }
    }

    /** Reads the recent changes again. */
    reloadChanges(): Promise<void> {
        return this.#history.reload();
    }

    /** The version of the wire; null until the host has said it. */
    get wireVersion(): string | null {
        return this.#client.version;
    }

    retryNow(): void {
        this.#client.retryNow();
    }

    async openSettings(): Promise<void> {
        this.#setAction(actionOf(await this.#client.openSettings(), 'opened'));
    }

    async logOut(): Promise<void> {
        const done = await this.#client.logOut();
        const values = done === null ? null : await this.#client.read();
        if (values !== null) {
            this.drafts.clear();
            this.searched = '';
            this.#update({ values, rows: {}, editor: null });
        }
        await this.reloadChanges();
        this.#setAction(actionOf(done, 'logged-out'));
    }

    clearAction(): void {
        this.#setAction('none');
    }

    #setAction(action: State['action']): void {
        clearTimeout(this.#actionTimer);
        this.#update({ action });
        if (action === 'opened' || action === 'logged-out') {
            this.#actionTimer = setTimeout(() => {
                this.clearAction();
            }, messageDuration);
        }
    }

    /** A success is cleared after a while; a refusal stays until the next change. */
    #setStatus(key: SettingKey, status: RowStatus): void {
        this.#update({ rows: { ...this.state.rows, [key]: status } });
        if (status.kind !== 'saving' && status.kind !== 'refused') {
            setTimeout(() => {
                if (this.state.rows[key] === status) {
                    this.clearStatus(key);
                }
            }, messageDuration);
        }
    }

    #handleStatus(connection: Status): void {
        this.#update({ connection });
        if (connection !== 'online') {
            return;
        }
        if (this.state.action === 'failed') {
            this.clearAction();
        }
        afterPaint(() => {
            void this.#client.isSelected().then((selected) => {
                if (selected !== null) {
                    this.#update({ selected });
                }
            });
        });
    }

    #handleValues(values: Values): void {
        this.#update({ values });
        afterPaint(() => {
            void this.reloadChanges();
        });
        for (const key of [...this.#unconfirmed.keys()]) {
            this.#confirm(key, values[key]);
        }
    }

    #handleChange({ key, value, event }: Change): void {
        if (event === null) {
            // Somebody may have logged out.
            void this.reloadChanges();
        }
        const wasRead = event === null || value !== event.to;
        // What was read may be older than what this page is saving.
        if (wasRead && this.state.rows[key]?.kind === 'saving') {
            return;
        }
        const isNews = event === null ? value !== this.state.values?.[key] : !wasRead;
        if (!this.#confirm(key, value) && isNews) {
            this.clearStatus(key);
            this.#messages.add({ key, value: value ?? '', event });
        }
        this.#show(key, value);
    }

    /** The host replies again: a new value without a reply may have arrived. Returns: whether it has. */
    #confirm(key: SettingKey, value: string | undefined): boolean {
        const wanted = this.#unconfirmed.get(key);
        if (!this.#unconfirmed.delete(key)) {
            return false;
        }
        if (wanted === value) {
            this.#setStatus(key, { kind: 'accepted' });
        } else {
            this.clearStatus(key);
        }
        return wanted === value;
    }

    #show(key: SettingKey, value: string | undefined): void {
        const { [key]: _old, ...others } = this.state.values ?? {};
        this.#update({ values: value === undefined ? others : { ...others, [key]: value } });
    }

    #update(change: Partial<State>): void {
        this.state = { ...this.state, ...change };
        for (const observer of this.#observers) {
            observer();
        }
    }
}

/** Why a page shows a new value as refused; null when it does not. */
function reasonOf(key: SettingKey, to: string, outcome: Outcome): Refused['reason'] | null {
    if (outcome.outcome === 'refused') {
        return outcome.reason;
    }
    // The device may keep its value although the change was announced.
    const isKept = catalogue[key].owner === 'device' && outcome.value !== to;
    return outcome.applied && !isKept ? null : 'not-applied';
}

function actionOf(done: boolean | null, success: 'opened' | 'logged-out'): State['action'] {
    return done === null ? 'failed' : done ? success : 'refused';
}
