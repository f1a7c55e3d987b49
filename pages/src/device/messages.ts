import { messageType } from 'settings-client';

export type Direction = 'in' | 'out';
/** The listener of the client; "all" is a frame to every client of the settings, of the socket and on pages. */
export type Listener = 'socket' | 'page' | 'device' | 'all';

export const directions: readonly Direction[] = ['in', 'out'];
export const listeners: readonly Listener[] = ['socket', 'page', 'device', 'all'];

/** The kind of a frame, as its text alone shows it. */
export type FrameKind =
    | 'GetSettings'
    | 'IsOrliaSelectedVA'
    | 'OpenVASettings'
    | 'LogOut'
    | 'SetSettings'
    | 'event'
    | 'notice'
    | 'error'
    | 'command'
    | 'reply'
    | 'other';

const kindsByType: ReadonlyMap<unknown, FrameKind> = new Map<unknown, FrameKind>([
    [messageType.getSettings, 'GetSettings'],
    [messageType.isSelected, 'IsOrliaSelectedVA'],
    [messageType.openSettings, 'OpenVASettings'],
    [messageType.logOut, 'LogOut'],
    [messageType.setSettings, 'SetSettings'],
    [messageType.settingChanged, 'event'],
]);

export const frameKinds: readonly FrameKind[] = [
    ...kindsByType.values(),
    'notice',
    'error',
    'command',
    'reply',
    'other',
];

/** A frame that passed through the host. */
export interface Message {
    /** Counts up from 1. */
    readonly serial: number;
    /** Milliseconds since the epoch. */
    readonly timestamp: number;
    /** As the host sees it: "in" was sent by a client. */
    readonly direction: Direction;
    readonly listener: Listener;
    /** Null when the frame went to every client. */
    readonly client: number | null;
    readonly kind: FrameKind;
    readonly text: string;
}

export type Trace = Omit<Message, 'serial' | 'kind'>;

function isRecord(value: unknown): value is Record<string, unknown> {
    return typeof value === 'object' && value !== null && !Array.isArray(value);
}

/** The JSON object in `text`, or null. */
export function parseObject(text: string): Record<string, unknown> | null {
    try {
        const value: unknown = JSON.parse(text);
        return isRecord(value) ? value : null;
    } catch {
        return null;
    }
}

export function kindOf(text: string): FrameKind {
    const frame = parseObject(text);
    if (frame === null) {
        return 'other';
    }
    if ('notice' in frame || 'error' in frame || 'command' in frame) {
        return 'notice' in frame ? 'notice' : 'error' in frame ? 'error' : 'command';
    }
    if ('ok' in frame || 'device' in frame) {
        return 'reply';
    }
    return kindsByType.get(frame['type']) ?? 'other';
}

/** The trace in `frame`; null when it is another frame or lacks a member. */
export function traceOf(frame: Record<string, unknown>): Trace | null {
    const trace = frame['trace'];
    if (!isRecord(trace)) {
        return null;
    }
    const { timestamp, text, client } = trace;
    const direction = directions.find((known) => known === trace['direction']);
    const listener = listeners.find((known) => known === trace['door']);
    if (typeof timestamp !== 'number' || typeof text !== 'string' || !direction || !listener) {
        return null;
    }
    return { timestamp, direction, listener, client: typeof client === 'number' ? client : null, text };
}
