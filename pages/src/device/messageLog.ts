import { factsOf, type Facts } from './facts';
import { connectionOf, type Trace } from './messages';

export interface Message extends Trace, Facts {
    /** Counts up from 1. */
    readonly serial: number;
    /** When it came, in milliseconds by the clock of the browser. */
    readonly arrived: number;
    /** Which connection of this page to the host it came by: the host counts its clients from 1 in each run. */
    readonly link: number;
}

/** The part of the log that is shown. */
export interface LogView {
    readonly messages: readonly Message[];
    readonly paused: boolean;
    /** The number of messages since the pause began. */
    readonly waiting: number;
    /** The time and the connection of this page to the host that are shown. */
    readonly time: number;
    readonly link: number;
}

/** How many connections' names are remembered; then all are forgotten. */
const maxNames = 512;

/**
 * The newest `capacity` messages, oldest first. While paused the view does not change; the log does.
 */
export class MessageLog {
    #kept: readonly Message[] = [];
    #total = 0;
    #link = 0;
    #names = new Map<string, string>();
    #pause: (Pick<LogView, 'messages' | 'time' | 'link'> & { readonly total: number }) | null = null;

    constructor(
        readonly capacity = 200,
        private readonly now: () => number = Date.now,
    ) {}

    add(trace: Trace): void {
        this.#total += 1;
        const facts = factsOf(trace);
        const name = facts.name ?? this.#names.get(connectionOf(trace)) ?? null;
        if (facts.kind === 'hello' && trace.direction === 'in' && facts.name !== null) {
            this.#names.set(connectionOf(trace), facts.name);
        }
        if (this.#names.size > maxNames) {
            this.#names.clear();
        }
        const message = { ...trace, ...facts, name, serial: this.#total, arrived: this.now(), link: this.#link };
        this.#kept = [...this.#kept, message].slice(-this.capacity);
    }

    /** A new connection of this page to the host: answers to what was sent before will not come. */
    connected(): void {
        this.#link += 1;
        this.#names.clear();
    }

    setPaused(paused: boolean): void {
        if (paused !== (this.#pause !== null)) {
            this.#pause = paused
                ? { messages: this.#kept, time: this.now(), link: this.#link, total: this.#total }
                : null;
        }
    }

    /** Removes every message, including those received during a pause. A pause continues. */
    clear(): void {
        this.#kept = [];
        if (this.#pause !== null) {
            this.#pause = { ...this.#pause, messages: [], total: this.#total };
        }
    }

    view(): LogView {
        return {
            messages: this.#pause?.messages ?? this.#kept,
            paused: this.#pause !== null,
            waiting: this.#pause === null ? 0 : this.#total - this.#pause.total,
            time: this.#pause?.time ?? this.now(),
            link: this.#pause?.link ?? this.#link,
        };
    }
}
