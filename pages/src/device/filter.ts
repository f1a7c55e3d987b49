import type { Direction, FrameKind, Listener, Message } from './messages';

/** Which messages to show; an empty text and null match everything. */
export interface Filter {
    readonly text: string;
    readonly direction: Direction | null;
    readonly listener: Listener | null;
    readonly kind: FrameKind | null;
}

export const everything: Filter = { text: '', direction: null, listener: null, kind: null };

/** A frame to all went to the clients of the socket and to the pages. */
function matchesListener(listener: Listener, wanted: Listener | null): boolean {
    return wanted === null || listener === wanted || (listener === 'all' && wanted !== 'device');
}

/** The messages that match; the text ignores case. */
export function filterMessages(messages: readonly Message[], filter: Filter): readonly Message[] {
    const wanted = filter.text.toLowerCase();
    return messages.filter(
        ({ direction, listener, kind, text }) =>
            (filter.direction ?? direction) === direction &&
            matchesListener(listener, filter.listener) &&
            (filter.kind ?? kind) === kind &&
            text.toLowerCase().includes(wanted),
    );
}
