import type { Direction, Door, FrameKind, Message } from './messages';

/** Which messages to show; an empty text and null take everything. */
export interface Filter {
    readonly text: string;
    readonly direction: Direction | null;
    readonly door: Door | null;
    readonly kind: FrameKind | null;
}

export const everything: Filter = { text: '', direction: null, door: null, kind: null };

/** A frame to all passed at the socket and on the pages, too. */
function passes(door: Door, wanted: Door | null): boolean {
    return wanted === null || door === wanted || (door === 'all' && wanted !== 'device');
}

/** Those of `messages` that fit; upper and lower case of the text are the same. */
export function filterMessages(messages: readonly Message[], filter: Filter): readonly Message[] {
    const wanted = filter.text.toLowerCase();
    return messages.filter(
        ({ direction, door, kind, text }) =>
            (filter.direction ?? direction) === direction &&
            passes(door, filter.door) &&
            (filter.kind ?? kind) === kind &&
            text.toLowerCase().includes(wanted),
    );
}
