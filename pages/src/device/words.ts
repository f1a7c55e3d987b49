import { kindOf, type FrameKind } from './kinds';
import { isRecord, type Direction, type Frame } from './messages';

/** A member that is an object; empty when it is something else. */
export function part(frame: Frame, member: string): Frame {
    const value = frame[member];
    return isRecord(value) ? value : {};
}

/** A member that is an array; empty when it is something else. */
export function listOf(frame: Frame, member: string): readonly unknown[] {
    const value = frame[member];
    return Array.isArray(value) ? value : [];
}

/** A value without the signs of JSON; of objects in a list only their number. */
function say(value: unknown): string {
    if (Array.isArray(value)) {
        return value.some(isRecord) ? String(value.length) : value.map(say).join(', ') || '(none)';
    }
    if (isRecord(value)) {
        return Object.entries(value)
            .map(([member, content]) => `${member} ${say(content)}`)
            .join(', ');
    }
    return value === '' ? '(empty)' : String(value);
}

/** A device command in words, or a request of a batch. */
export function sayRequest(request: unknown): string {
    return isRecord(request) ? wordsOf(request, 'in') : say(request);
}

const requests: Partial<Readonly<Record<FrameKind, (frame: Frame, payload: Frame) => string>>> = {
    GetSettings: (_, payload) => `Read ${listOf(payload, 'settings').map(say).join(', ') || 'every setting'}`,
    SetSettings: (_, { settingDBId, to }) => `Set ${say(settingDBId)} to ${say(to)}`,
    batch: (frame) => `Batch: ${listOf(frame, 'batch').map(sayRequest).join('; ')}`,
    command: ({ enabled, ...members }) =>
        Object.values(members).map(say).join(' ') + (enabled === undefined ? '' : enabled === true ? ' on' : ' off'),
};

const answers: typeof requests = {
    event: ({ client, origin }, { settingDBId, from, to }) =>
        `${say(settingDBId)}: ${say(from)} → ${say(to)}, by ${say(client ?? origin)}`,
    notice: (frame) => `Read again: ${say(part(frame, 'notice')['reread'])}`,
    error: (frame) => {
        const { code, message, index } = part(frame, 'error');
        return `refused, ${say(code)}: ${say(message)}` + (index === undefined ? '' : `, index ${say(index)}`);
    },
    hello: (frame) => {
        const { run, ...others } = part(frame, 'hello');
        return say(others);
    },
    ok: ({ changed }) => (changed === false ? 'unchanged' : 'done'),
};

/** What a frame says, in words. */
export function wordsOf(frame: Frame, direction: Direction): string {
    const kind = kindOf(frame);
    const payload = part(frame, 'payload');
    const { outcome, reason, message, value, applied, settings } = payload;
    const sayKind = (direction === 'in' ? requests : answers)[kind];
    if (sayKind !== undefined) {
        return sayKind(frame, payload);
    }
    if (outcome !== undefined) {
        return outcome === 'refused'
            ? `refused, ${say(reason)}: ${say(message)}`
            : say(outcome) +
                  (value === undefined ? '' : `: ${say(value)}`) +
                  (applied === false ? ', refused by the voice SDK' : '');
    }
    // Queries, their replies, and replies with values: what the frame contains.
    return `${direction === 'in' ? kind : ''} ${say(settings ?? frame[kind] ?? payload)}`.trim();
}
