import type { Command } from './commands';
import { parseObject, traceOf, type Frame, type Trace } from './messages';

type ReplyHandler = (reply: Frame) => void;

function failure(code: string, message: string): Frame {
    return { error: { code, message } };
}

/**
 * Commands and replies over the device socket: one reply to each command, in order, with traces between them. Owns no socket:
 * its owner reports when the connection opens and closes, and hands over each frame.
 */
export class DeviceSession {
    #open = false;
    #pending: ReplyHandler[] = [];

    constructor(
        private readonly send: (text: string) => void,
        private readonly traced: (trace: Trace) => void,
    ) {}

    opened(): void {
        this.#open = true;
    }

    closed(): void {
        this.#open = false;
        const unreplied = this.#pending;
        this.#pending = [];
        for (const handle of unreplied) {
            handle(failure('no-reply', 'the connection was lost before the reply came'));
        }
    }

    request(command: Command, handle: ReplyHandler): void {
        if (this.#open) {
            this.#pending.push(handle);
            this.send(JSON.stringify(command));
        } else {
            handle(failure('no-connection', 'the host cannot be reached'));
        }
    }

    received(text: string): void {
        const frame = parseObject(text) ?? {};
        const trace = traceOf(frame);
        if (trace === null) {
            this.#pending.shift()?.(frame);
        } else {
            this.traced(trace);
        }
    }
}
