import { wordsOf } from './words';
import type { Zone } from './zones';

/** The zones in one language. All languages have the same zones in the same order. */
export interface ZonesInLanguage {
    readonly code: string;
    readonly zones: readonly Zone[];
}

interface Field {
    readonly words: readonly string[];
    /** Lower is better: cities, then countries, then identifiers; the page's language before the others. */
    readonly rank: number;
}

interface Entry {
    readonly zone: Zone;
    readonly fields: readonly Field[];
}

export type SearchIndex = readonly Entry[];

const noMatch = Infinity;
/** A text that is typed whole is found before those that begin with it. */
const prefixRank = 4;
const identifierRank = 9;

function countryNamesIn(code: string): (country: string) => string[] {
    const styles = (['long', 'short'] as const).map(
        (style) => new Intl.DisplayNames([code], { type: 'region', style, fallback: 'none' }),
    );
    return (country) => (country === '' ? [] : [country, ...styles.map((names) => names.of(country) ?? '')]);
}

/** What is searched: the page's language first. */
export function indexOf([own, ...others]: readonly ZonesInLanguage[]): SearchIndex {
    const languages = [own, ...others].filter((language) => language !== undefined);
    const countries = languages.map(({ code }) => countryNamesIn(code));
    return (own?.zones ?? []).map((zone, index) => {
        const fields = new Map<string, number>();
        const add = (text: string, rank: number) => {
            const known = wordsOf(text).join(' ');
            if (known !== '') {
                fields.set(known, Math.min(rank, fields.get(known) ?? noMatch));
            }
        };
        languages.forEach(({ zones }, language) => {
            const foreign = Math.sign(language);
            add(zones[index]?.city ?? '', foreign);
            countries[language]?.(zone.country).forEach((name) => {
                add(name, 2 + foreign);
            });
        });
        [zone.id, ...zone.others].forEach((id) => {
            add(id, identifierRank);
        });
        return { zone, fields: [...fields].map(([text, rank]) => ({ words: text.split(' '), rank })) };
    });
}

/** How well a zone matches: each typed word begins a word of it. */
function rankOf({ fields }: Entry, typed: readonly string[]): number {
    const phrase = typed.join(' ');
    const whole = fields.filter(({ words }) => words.join(' ') === phrase).map(({ rank }) => rank);
    const parts = typed.map((part) => {
        const ranks = fields.filter(({ words }) => words.some((word) => word.startsWith(part))).map(({ rank }) => rank);
        return Math.min(noMatch, ...ranks) + prefixRank;
    });
    return Math.min(noMatch, ...whole, Math.max(...parts));
}

/** The zones that match what was typed, the best first; of equal ones in the order of `index`. */
export function search(index: SearchIndex, text: string): readonly Zone[] {
    const typed = wordsOf(text);
    if (typed.length === 0) {
        return [];
    }
    return index
        .map((entry) => ({ zone: entry.zone, rank: rankOf(entry, typed) }))
        .filter(({ rank }) => rank !== noMatch)
        .sort((one, other) => one.rank - other.rank)
        .map(({ zone }) => zone);
}
