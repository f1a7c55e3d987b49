export type Direction = 'in' | 'out';
/** The listener of the client; "all" is a frame to every client of the settings, of the socket and on pages. */
export type Listener = 'socket' | 'page' | 'device' | 'all';
export type Frame = Readonly<Record<string, unknown>>;

/** A frame that passed through the host. */
export interface Trace {
    /** Milliseconds since the epoch, by the clock of the host. */
    readonly timestamp: number;
    /** As the host sees it: "in" was sent by a client. */
    readonly direction: Direction;
    readonly listener: Listener;
    /** Null when the frame went to every client. */
    readonly client: number | null;
    readonly text: string;
}

export function isRecord(value: unknown): value is Frame {
    return typeof value === 'object' && value !== null && !Array.isArray(value);
}

/** The JSON object in `text`, or null. */
export function parseObject(text: string): Frame | null {
    try {
        const value: unknown = JSON.parse(text);
        return isRecord(value) ? value : null;
    } catch {
        return null;
    }
}

/** The trace in `frame`; null when it is another frame. */
export function traceOf({ trace }: Frame): Trace | null {
    if (!isRecord(trace)) {
        return null;
    }
    const { door, ...members } = trace;
    return { ...members, listener: door } as unknown as Trace;
}

/** The connection that a frame passed, such as "socket-7"; "all" for a frame to every client. */
export function connectionOf({ listener, client }: Pick<Trace, 'listener' | 'client'>): string {
    return client === null ? listener : `${listener}-${client}`;
}
