import { messageType } from './messageTypes';

/** The largest frame that the host accepts, in bytes. */
const maxFrameSize = 65_536;

export type Values = Readonly<Record<string, string>>;
export type Origin = 'socket' | 'page' | 'device';

export interface ChangeEvent {
    readonly kind: 'event';
    readonly key: string;
    readonly from: string;
    readonly to: string;
    readonly origin: Origin;
    readonly sequence: number;
    readonly timestamp: number;
}
export interface Reply {
    readonly kind: 'reply';
    readonly type: number;
    readonly messageId: string;
    readonly payload: Readonly<Record<string, unknown>>;
}
export interface Notice {
    readonly kind: 'notice';
    readonly keys: readonly string[];
}
export interface Refusal {
    readonly kind: 'refusal';
    readonly code: string;
}
export type Frame = ChangeEvent | Reply | Notice | Refusal;

type Members = Readonly<Record<string, unknown>>;

function members(value: unknown): Members {
    return typeof value === 'object' && value !== null ? (value as Members) : {};
}

function text(value: unknown): string {
    return typeof value === 'string' ? value : '';
}

function number(value: unknown): number {
    return typeof value === 'number' ? value : 0;
}

function originOf(value: unknown): Origin {
    return value === 'page' || value === 'device' ? value : 'socket';
}

/** A frame of the host; null when it is not one that the pages know. */
export function parseFrame(received: string): Frame | null {
    let frame: Members;
    try {
        frame = members(JSON.parse(received));
    } catch {
        return null;
    }
    const payload = members(frame['payload']);
    if (frame['type'] === messageType.settingChanged) {
        return {
            kind: 'event',
            key: text(payload['settingDBId']),
            from: text(payload['from']),
            to: text(payload['to']),
            origin: originOf(frame['origin']),
            sequence: number(frame['sequence']),
            timestamp: number(frame['timestamp']),
        };
    }
    if ('notice' in frame) {
        const keys = members(frame['notice'])['reread'];
        return { kind: 'notice', keys: Array.isArray(keys) ? keys.map(text).filter((key) => key !== '') : [] };
    }
    if ('error' in frame) {
        return { kind: 'refusal', code: text(members(frame['error'])['code']) };
    }
    if (typeof frame['type'] === 'number') {
        return { kind: 'reply', type: frame['type'], messageId: text(frame['messageId']), payload };
    }
    return null;
}

/** The settings of a reply that have a text as their value. */
export function valuesOf(reply: Reply): Values {
    const settings = Object.entries(members(reply.payload['settings']));
    return Object.fromEntries(settings.filter((entry): entry is [string, string] => typeof entry[1] === 'string'));
}

export function getFrame(messageId: string, settings: readonly string[]): string {
    return JSON.stringify({ type: messageType.getSettings, messageId, payload: { settings } });
}

export function setFrame(messageId: string, timestamp: number, settingDBId: string, to: string): string {
    return JSON.stringify({ type: messageType.setSettings, messageId, timestamp, payload: { settingDBId, to } });
}

export function plainFrame(type: number, messageId: string): string {
    return JSON.stringify({ type, messageId });
}

export function isTooLong(frame: string): boolean {
    return new TextEncoder().encode(frame).length > maxFrameSize;
}
