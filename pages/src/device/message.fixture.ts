import { factsOf } from './facts';
import type { Message } from './messageLog';
import type { Trace } from './messages';

let total = 0;

/** A message with this text, from the client 1 of the socket unless said otherwise. */
export function messageOf(
    frame: object | string,
    others: Partial<Trace & Pick<Message, 'link' | 'arrived' | 'name'>> = {},
): Message {
    total += 1;
    const text = typeof frame === 'string' ? frame : JSON.stringify(frame);
    const trace: Trace = { timestamp: total, direction: 'in', listener: 'socket', client: 1, text, ...others };
    return { link: 1, arrived: 0, ...factsOf(trace), ...trace, serial: total, ...others };
}

/** A message that the host sent. */
export function sentByHost(frame: object | string, others: Parameters<typeof messageOf>[1] = {}): Message {
    return messageOf(frame, { direction: 'out', ...others });
}
