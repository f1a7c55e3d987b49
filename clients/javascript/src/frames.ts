import { isSetting, type SettingKey } from './catalogue.js';
import { messageType } from './messageTypes.js';

/** Values by key. A setting without a value is absent. */
export type Values = Readonly<Partial<Record<SettingKey, string>>>;

/** A change that the host announced. */
export interface ChangeEvent {
    readonly key: SettingKey;
    readonly from: string;
    readonly to: string;
    /** Who caused it: a program, a page or the device; null when this version does not know the word. */
    readonly origin: 'socket' | 'page' | 'device' | null;
    /** The name of the client that caused it; null when it has none. */
    readonly client: string | null;
    /** Milliseconds since the epoch. */
    readonly timestamp: number;
    /** 1, 2, 3 … in one run of the host. */
    readonly sequence: number;
}

const reasons = ['incomplete', 'stale', 'read-only', 'wrong-form', 'not-stored'] as const;

/**
 * Why a change was refused. Of the host: a member is missing, somebody else set it with a newer time stamp, only the device
 * sets it, it is no list of locales, it could not be stored, a reason of a later version. Of this client: over 64 KiB or 64
 * changes in one request, so that nothing was sent; no reply came, so that the change may have been made.
 */
export type Reason = (typeof reasons)[number] | 'unknown' | 'too-long' | 'no-reply';

/** What a change led to, and the value now, where it is known and there is one. */
export type Outcome =
    | {
          readonly outcome: 'changed' | 'unchanged';
          readonly value: string | undefined;
          /** False: the voice SDK refused the value although the change was announced. */
          readonly applied: boolean;
      }
    | {
          readonly outcome: 'refused';
          readonly reason: Reason;
          /** The words of the host, in English. */
          readonly message: string;
          readonly value: string | undefined;
      };

export type Members = Readonly<Record<string, unknown>>;

export interface EventFrame extends Omit<ChangeEvent, 'key'> {
    readonly kind: 'event';
    readonly key: string;
}
export interface Reply {
    readonly kind: 'reply';
    readonly messageId: string;
    readonly body: Members;
}
export interface Refusal {
    readonly kind: 'refusal';
    readonly code: string;
}
export type Frame = EventFrame | Reply | Refusal | { readonly kind: 'notice'; readonly keys: readonly SettingKey[] };

function members(value: unknown): Members {
    return typeof value === 'object' && value !== null ? (value as Members) : {};
}

function textOr<Other>(value: unknown, other: Other): string | Other {
    return typeof value === 'string' ? value : other;
}

export function number(value: unknown): number {
    return Number.isSafeInteger(value) ? (value as number) : 0;
}

function oneOf<Word>(words: readonly Word[], value: unknown): Word | undefined {
    return words.find((word) => word === value);
}

/** The keys in a list that the catalogue has. */
export function keysIn(list: unknown): SettingKey[] {
    return Array.isArray(list) ? list.filter(isSetting) : [];
}

function eventOf(frame: Members): EventFrame {
    const { settingDBId, from, to } = members(frame['payload']);
    return {
        kind: 'event',
        key: textOr(settingDBId, ''),
        from: textOr(from, ''),
        to: textOr(to, ''),
        origin: oneOf(['socket', 'page', 'device'], frame['origin']) ?? null,
        client: textOr(frame['client'], null),
        timestamp: number(frame['timestamp']),
        sequence: number(frame['sequence']),
    };
}

/** A frame of the host; null when it is not one that this version knows. */
export function parseFrame(received: string): Frame | null {
    let frame: Members;
    try {
        frame = members(JSON.parse(received));
    } catch {
        return null;
    }
    const { type, messageId, notice, error } = frame;
    if (type === messageType.settingChanged) {
        return eventOf(frame);
    }
    if (notice !== undefined) {
        return { kind: 'notice', keys: keysIn(members(notice)['reread']) };
    }
    if (error !== undefined) {
        return { kind: 'refusal', code: textOr(members(error)['code'], '') };
    }
    if (typeof messageId === 'string') {
        return { kind: 'reply', messageId, body: members(frame['payload'] ?? frame['hello'] ?? frame['history']) };
    }
    return null;
}

/** The events in the reply to a request for the history. */
export function eventsOf({ body: { events } }: Reply): ChangeEvent[] {
    const frames = Array.isArray(events) ? events.map((event) => eventOf(members(event))) : [];
    return frames.flatMap(({ kind: _kind, key, ...event }) => (isSetting(key) ? [{ key, ...event }] : []));
}

/** The values in a reply that are texts. */
export function valuesOf({ body }: Reply): Values {
    const settings = Object.entries(members(body['settings']));
    return Object.fromEntries(settings.filter(([, value]) => typeof value === 'string'));
}

export function outcomeOf({ body }: Reply): Outcome {
    const outcome = oneOf(['changed', 'unchanged'] as const, body['outcome']);
    const value = textOr(body['value'], undefined);
    if (outcome !== undefined) {
        return { outcome, value, applied: body['applied'] !== false };
    }
    const reason = oneOf(reasons, body['reason']) ?? 'unknown';
    return { outcome: 'refused', reason, message: textOr(body['message'], ''), value };
}

/** An outcome that the host did not tell. */
export function refused(reason: Reason): Outcome {
    return { outcome: 'refused', reason, message: '', value: undefined };
}
