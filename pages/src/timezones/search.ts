import { plain } from '../settings/plain';
import { zonesOf, type Region, type Zone } from './zones';

/** The names in a language. */
export interface Names {
    readonly code: string;
    readonly regions: readonly Region[];
}

interface Field {
    readonly text: string;
    /** Lower is better: cities, then countries, then identifiers; the page's language before the others. */
    readonly rank: number;
}

export interface Entry {
    readonly zone: Zone;
    readonly fields: readonly Field[];
}

/** A text that is typed whole is found before those that begin with it. */
const prefixRank = 4;
const identifierRank = 9;

/** The names of a zone in a language: the city, the country in full, its abbreviation, its code. */
function namesIn({ code, regions }: Names): (zone: Zone) => readonly string[] {
    const cities = new Map(zonesOf(regions).map(({ id, city }) => [id, city]));
    const countries = (['long', 'short'] as const).map(
        (style) => new Intl.DisplayNames([code], { type: 'region', style, fallback: 'none' }),
    );
    return ({ id, country }) => [
        cities.get(id) ?? '',
        ...(country === '' ? [] : [country, ...countries.map((names) => names.of(country) ?? '')]),
    ];
}

/** What is searched; the page's language is the first. */
export function indexOf(languages: readonly Names[]): readonly Entry[] {
    const names = languages.map(namesIn);
    return zonesOf(languages[0]?.regions ?? []).map((zone) => ({
        zone,
        fields: [
            ...names.flatMap((of, language) =>
                of(zone).map((name, part) => ({
                    text: plain(name),
                    rank: 2 * Math.min(part, 1) + Math.min(language, 1),
                })),
            ),
            ...[zone.id, ...zone.others].map((id) => ({ text: plain(id), rank: identifierRank })),
        ],
    }));
}

/** How well a zone matches what was typed, if each word of that begins a word of the zone. */
function rankOf({ fields }: Entry, typed: string): number {
    const best = (isFound: (text: string) => boolean) =>
        Math.min(Infinity, ...fields.filter(({ text }) => isFound(text)).map(({ rank }) => rank));
    const words = typed.split(' ').map((word) => best((text) => ` ${text}`.includes(` ${word}`)) + prefixRank);
    return Math.min(
        best((text) => text === typed),
        Math.max(...words),
    );
}

/** The zones that match what was typed, the best first; of equal ones in the order of `index`. */
export function search(index: readonly Entry[], text: string): readonly Zone[] {
    const typed = plain(text);
    return index
        .map((entry) => ({ zone: entry.zone, rank: typed === '' ? Infinity : rankOf(entry, typed) }))
        .filter(({ rank }) => rank !== Infinity)
        .sort(
            (one, other) =>
                one.rank - other.rank || Number(other.zone.isMain === true) - Number(one.zone.isMain === true),
        )
        .map(({ zone }) => zone);
}
