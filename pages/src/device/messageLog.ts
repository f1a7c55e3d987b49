import { kindOf, type Message, type Trace } from './messages';

/** The part of the log that is shown. */
export interface LogView {
    readonly messages: readonly Message[];
    readonly paused: boolean;
    /** The number of messages since the pause began. */
    readonly waiting: number;
    /** The number of those that the log no longer holds. */
    readonly lost: number;
}

/**
 * The newest `capacity` messages, oldest first. While paused the view does not change; the log does.
 */
export class MessageLog {
    private kept: readonly Message[] = [];
    private total = 0;
    private pause: { readonly messages: readonly Message[]; readonly total: number } | null = null;

    constructor(readonly capacity = 200) {}

    add(trace: Trace): void {
        this.total += 1;
        const message: Message = { ...trace, serial: this.total, kind: kindOf(trace.text) };
        this.kept = [...this.kept, message].slice(-this.capacity);
    }

    setPaused(paused: boolean): void {
        if (paused !== (this.pause !== null)) {
            this.pause = paused ? { messages: this.kept, total: this.total } : null;
        }
    }

    /** Removes every message, including those received during a pause. A pause continues. */
    clear(): void {
        this.kept = [];
        if (this.pause !== null) {
            this.pause = { messages: [], total: this.total };
        }
    }

    view(): LogView {
        const waiting = this.pause === null ? 0 : this.total - this.pause.total;
        return {
            messages: this.pause?.messages ?? this.kept,
            paused: this.pause !== null,
            waiting,
            lost: Math.max(0, waiting - this.capacity),
        };
    }
}
