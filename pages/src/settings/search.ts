import { plain } from './plain';

/** Something that a search can find. */
export interface Entry {
    readonly name: string;
    /** Other words that it is found by, those that tell most first: its section, its values, its explanation. */
    readonly words: readonly string[];
}

/** How well an entry fits: 0 when its name begins with what was typed, more for less. Null when a typed word is nowhere. */
function rankOf({ name, words }: Entry, typed: string): number | null {
    const texts = [name, ...words].map(plain);
    const all = texts.join(' ');
    // "handsfree" and "hands free" are both "hands-free".
    const isThere = typed.split(' ').every((word) => all.includes(word)) || all.replaceAll(' ', '').includes(typed);
    if (!isThere) {
        return null;
    }
    const place = texts.findIndex((text) => text.includes(typed));
    return texts[0]?.startsWith(typed) === true ? 0 : 1 + (place < 0 ? texts.length : place);
}

/** The entries that have every typed word, the best first; all of them when nothing was typed. */
export function found<Found extends Entry>(entries: readonly Found[], typed: string): readonly Found[] {
    const wanted = plain(typed);
    return entries
        .map((entry) => ({ entry, rank: rankOf(entry, wanted) }))
        .filter((one): one is { entry: Found; rank: number } => one.rank !== null)
        .sort((one, other) => one.rank - other.rank)
        .map(({ entry }) => entry);
}
