import type { Command, Outcome } from './commands';
import { MessageLog, type LogView } from './messageLog';
import { parseObject, traceOf } from './messages';

export type DeviceState = Readonly<Record<string, string>>;

/** The host does not trace this command; otherwise each refresh would cause the next. */
const refreshCommand: Command = { command: 'show' };
/** How long traces are collected before the state is requested once, in milliseconds. */
export const refreshDelay = 100;

type ReplyHandler = (frame: Record<string, unknown>) => void;

/**
 * Commands and replies over the device socket: one reply to each command, in order, with traces between them. Owns no socket:
 * its owner reports when the connection opens and closes, and hands over each frame.
 */
export class DeviceSession {
    private readonly log = new MessageLog();
    private state: DeviceState | null = null;
    private open = false;
    private pending: ReplyHandler[] = [];
    private refreshTimer: ReturnType<typeof setTimeout> | null = null;

    constructor(
        private readonly send: (text: string) => void,
        private readonly changed: () => void,
    ) {}

    /** The last known state of the device; null until it is known. */
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
        this.request({ command: 'trace', enabled: true }, () => undefined);
        this.refresh();
    }

    closed(): void {
        this.open = false;
        const unreplied = this.pending;
        this.pending = [];
        for (const handle of unreplied) {
            handle({ error: { code: 'no-reply', message: 'the connection was lost before the reply came' } });
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
            this.request(command, (reply) => {
                resolve(outcomeOf(reply));
                this.refresh();
            });
        });
    }

    received(text: string): void {
        const frame = parseObject(text) ?? {};
        if (!('trace' in frame)) {
            this.pending.shift()?.(frame);
            return;
        }
        const trace = traceOf(frame);
        if (trace !== null) {
            this.log.add(trace);
            this.changed();
            this.refreshTimer ??= setTimeout(() => {
                this.refresh();
            }, refreshDelay);
        }
    }

    private request(command: Command, handle: ReplyHandler): void {
        this.pending.push(handle);
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
        this.request(refreshCommand, ({ device }) => {
            if (typeof device === 'object' && device !== null) {
                this.state = Object.fromEntries(Object.entries(device).map(([fact, value]) => [fact, String(value)]));
                this.changed();
            }
        });
    }
}

function outcomeOf(reply: Record<string, unknown>): Outcome {
    if (reply['ok'] === true) {
        return reply['changed'] === false ? { ok: true, changed: false } : { ok: true };
    }
    const { code, message } = (reply['error'] ?? {}) as Record<string, unknown>;
    return {
        ok: false,
        code: typeof code === 'string' ? code : 'unknown-reply',
        message: typeof message === 'string' ? message : 'the host sent an unknown reply',
    };
}
