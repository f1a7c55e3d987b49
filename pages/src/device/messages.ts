export type Direction = 'in' | 'out';
/** Where a frame passed; "all" is a frame to every client of the settings, at the socket and on pages. */
export type Door = 'socket' | 'page' | 'device' | 'all';

export const directions: readonly Direction[] = ['in', 'out'];
export const doors: readonly Door[] = ['socket', 'page', 'device', 'all'];

/** What a frame is, told from its text alone. */
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
    | 'answer'
    | 'other';

const kindsByType: ReadonlyMap<unknown, FrameKind> = new Map<unknown, FrameKind>([
    [7, 'GetSettings'],
    [18, 'IsOrliaSelectedVA'],
    [19, 'OpenVASettings'],
    [22, 'LogOut'],
    [24, 'SetSettings'],
    [25, 'event'],
]);

export const frameKinds: readonly FrameKind[] = [
    ...kindsByType.values(),
    'notice',
    'error',
    'command',
    'answer',
    'other',
];

/** One frame that went through the host. */
export interface Message {
    /** Counts up from 1 and tells two messages with the same content apart. */
    readonly serial: number;
    /** Milliseconds since the epoch. */
    readonly timestamp: number;
    /** As the host sees it: "in" was sent by a client. */
    readonly direction: Direction;
    readonly door: Door;
    /** Null when the frame went to every client. */
    readonly client: number | null;
    readonly kind: FrameKind;
    readonly text: string;
}

export type Trace = Omit<Message, 'serial' | 'kind'>;

function isRecord(value: unknown): value is Record<string, unknown> {
    return typeof value === 'object' && value !== null && !Array.isArray(value);
}

/** The object that `text` is as JSON, or null. */
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
        return 'answer';
    }
    return kindsByType.get(frame['type']) ?? 'other';
}

/** The trace that `frame` carries, or null when it is another frame or lacks a member. */
export function traceOf(frame: Record<string, unknown>): Trace | null {
    const trace = frame['trace'];
    if (!isRecord(trace)) {
        return null;
    }
    const { timestamp, text, client } = trace;
    const direction = directions.find((known) => known === trace['direction']);
    const door = doors.find((known) => known === trace['door']);
    if (typeof timestamp !== 'number' || typeof text !== 'string' || !direction || !door) {
        return null;
    }
    return { timestamp, direction, door, client: typeof client === 'number' ? client : null, text };
}
