import { kindOf, type Message, type Trace } from './messages';

/** What a viewer of the log sees. */
export interface LogView {
    readonly messages: readonly Message[];
    readonly paused: boolean;
    /** How many messages came since the pause began. */
    readonly waiting: number;
    /** How many of those are gone already because more than the log holds came. */
    readonly lost: number;
}

/**
 * The newest messages, oldest first. While paused the view stands still and the log goes on, so a pause loses nothing but
 * what came before the newest `capacity` messages.
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

    /** Forgets every message, also those that a pause holds back. A pause goes on. */
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
