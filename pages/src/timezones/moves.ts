import type { Direction } from '../focus/navigation';
import type { Letter } from './zones';

/** Where the focus is in the panel. */
export type Place =
    /** The first step: the search, the present zone, the regions, or what the search found. */
    | { readonly column: 'rows'; readonly index: number }
    /** The cities of a region. */
    | { readonly column: 'cities'; readonly index: number }
    /** The letters beside them, and the city to which the focus returns. */
    | { readonly column: 'letters'; readonly index: number; readonly city: number };

/** The lengths of the columns. */
export interface Columns {
    readonly rows: number;
    readonly cities: number;
    readonly letters: readonly Letter[];
}

function step(index: number, direction: Direction, count: number): number {
    const next = index + (direction === 'up' ? -1 : 1);
    return Math.max(0, Math.min(count - 1, next));
}

/** Where an arrow leads; null when it leads back to the first step. */
export function moved(place: Place, direction: Direction, { rows, cities, letters }: Columns): Place | null {
    const isSideways = direction === 'forward' || direction === 'back';
    switch (place.column) {
        case 'rows':
            return isSideways ? place : { ...place, index: step(place.index, direction, rows) };
        case 'cities': {
            if (!isSideways) {
                return { ...place, index: step(place.index, direction, cities) };
            }
            const letter = letters.filter(({ start }) => start <= place.index).length - 1;
            return direction === 'back' ? null : { column: 'letters', index: letter, city: place.index };
        }
        case 'letters': {
            if (isSideways) {
                return direction === 'back' ? { column: 'cities', index: place.city } : place;
            }
            const index = step(place.index, direction, letters.length);
            return index === place.index ? place : { ...place, index, city: letters[index]?.start ?? 0 };
        }
    }
}
