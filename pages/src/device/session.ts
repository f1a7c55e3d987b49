import type { Command, Outcome } from './commands';
import { MessageLog, type LogView } from './messageLog';
import { parseObject, traceOf } from './messages';

export type DeviceState = Readonly<Record<string, string>>;

/** The host traces no question for the state; otherwise each would lead to the next. */
const refreshCommand: Command = { command: 'show' };
/** How long what happened is gathered before the state is asked for once, in milliseconds. */
export const refreshPause = 100;

type Waiting = (frame: Record<string, unknown>) => void;

/**
 * The conversation at the device door: one answer to each command, in order, and traces between them. Knows no socket: it is
 * told when the connection opens and closes and what comes.
 */
export class DeviceSession {
    private readonly log = new MessageLog();
    private state: DeviceState | null = null;
    private open = false;
    private waiting: Waiting[] = [];
    private refreshTimer: ReturnType<typeof setTimeout> | null = null;

    constructor(
        private readonly send: (text: string) => void,
        private readonly changed: () => void,
    ) {}

    /** The newest known state of the device; null until it is known. */
    get deviceState(): DeviceState | null {
        return this.state;
    }

    view(): LogView {
        return this.log.view();
    }

    pause(paused: boolean): void {
        this.log.setPaused(paused);
        this.changed();
    }

    clear(): void {
        this.log.clear();
        this.changed();
    }

    opened(): void {
        this.open = true;
        this.ask({ command: 'trace', enabled: true }, () => undefined);
        this.refresh();
    }

    closed(): void {
        this.open = false;
        const unanswered = this.waiting;
        this.waiting = [];
        for (const answer of unanswered) {
            answer({ error: { code: 'no-answer', message: 'the connection was lost before the answer came' } });
        }
        if (this.refreshTimer !== null) {
            clearTimeout(this.refreshTimer);
            this.refreshTimer = null;
        }
    }

    run(command: Command): Promise<Outcome> {
        if (!this.open) {
            return Promise.resolve({ ok: false, code: 'no-connection', message: 'the host cannot be reached' });
        }
        return new Promise((resolve) => {
            this.ask(command, (answer) => {
                resolve(outcomeOf(answer));
                this.refresh();
            });
        });
    }

    received(text: string): void {
        const frame = parseObject(text) ?? {};
        if (!('trace' in frame)) {
            this.waiting.shift()?.(frame);
            return;
        }
        const trace = traceOf(frame);
        if (trace !== null) {
            this.log.add(trace);
            this.changed();
            this.refreshTimer ??= setTimeout(() => {
                this.refresh();
            }, refreshPause);
        }
    }

    private ask(command: Command, answer: Waiting): void {
        this.waiting.push(answer);
        this.send(JSON.stringify(command));
    }

    private refresh(): void {
        if (this.refreshTimer !== null) {
            clearTimeout(this.refreshTimer);
            this.refreshTimer = null;
        }
        if (!this.open) {
            return;
        }
        this.ask(refreshCommand, ({ device }) => {
            if (typeof device === 'object' && device !== null) {
                this.state = Object.fromEntries(Object.entries(device).map(([fact, value]) => [fact, String(value)]));
                this.changed();
            }
        });
    }
}

function outcomeOf(answer: Record<string, unknown>): Outcome {
    if (answer['ok'] === true) {
        return answer['changed'] === false ? { ok: true, changed: false } : { ok: true };
    }
    const { code, message } = (answer['error'] ?? {}) as Record<string, unknown>;
    return {
        ok: false,
        code: typeof code === 'string' ? code : 'unknown-answer',
        message: typeof message === 'string' ? message : 'the host gave an answer that this page does not know',
    };
}
