import type { Direction, Door, FrameKind, Message } from './messages';

/** Which messages to show; an empty text and null take everything. */
export interface Filter {
  readonly text: string;
  readonly direction: Direction | null;
  readonly door: Door | null;
  readonly kind: FrameKind | null;
}

export const everything: Filter = { text: '', direction: null, door: null, kind: null };

/** Those of `messages` that fit; upper and lower case of the text are the same. */
export function filterMessages(messages: readonly Message[], filter: Filter): readonly Message[] {
  const wanted = filter.text.toLowerCase();
  return messages.filter(
    ({ direction, door, kind, text }) =>
      (filter.direction ?? direction) === direction &&
      (filter.door ?? door) === door &&
      (filter.kind ?? kind) === kind &&
      text.toLowerCase().includes(wanted),
  );
}
