import { describe, expect, it } from 'vitest';

import { translations } from '../i18n/translations';
import { moved, type Columns, type Place } from './moves';
import { regionsIn } from './testData';
import type { Region } from './zones';

const directions = ['up', 'down', 'forward', 'back'] as const;
/** The rows of the first step: the search, the present zone, the regions, UTC. */
const firstRows = { search: 0, present: 1, regions: 2 } as const;

function nameOf(place: Place): string {
    return place.column === 'letters' ? `letters ${place.index} ${place.city}` : `${place.column} ${place.index}`;
}

/** The least number of arrows from a place to each other that they reach. */
function arrowsFrom(start: Place, columns: Columns): ReadonlyMap<string, number> {
    const counts = new Map([[nameOf(start), 0]]);
    const places = [start];
    for (const place of places) {
        for (const direction of directions) {
            const next = moved(place, direction, columns);
            if (next !== null && !counts.has(nameOf(next))) {
                counts.set(nameOf(next), (counts.get(nameOf(place)) ?? 0) + 1);
                places.push(next);
            }
        }
    }
    return counts;
}

/** The key presses from the row of the setting to each city of a region, by the present zone's place in it. */
function pressesTo({ zones, letters }: Region, number: number, count: number, present: number): readonly number[] {
    const rows = { rows: firstRows.regions + count, cities: 0, letters: [] };
    const toRegion = arrowsFrom({ column: 'rows', index: firstRows.present }, rows).get(
        nameOf({ column: 'rows', index: firstRows.regions + number }),
    );
    const toCity = arrowsFrom({ column: 'cities', index: present }, { rows: 0, cities: zones.length, letters });
    // Enter opens the panel, the region, and chooses the city; UTC is a row of the first step.
    return zones.map((_zone, index) => {
        return (toRegion ?? Infinity) + (toCity.get(nameOf({ column: 'cities', index })) ?? Infinity) + 3;
    });
}

describe('the number of key presses to a time zone, without typing', () => {
    it.each(Object.keys(translations))('is at most 25 in %s, wherever the TV is now', (code) => {
        const regions = regionsIn(code);
        expect(regions.length).toBe(8);
        for (const [number, region] of regions.entries()) {
            // The TV may be in another region: then the first city has the focus.
            for (const present of region.zones.keys()) {
                const presses = Math.max(...pressesTo(region, number, regions.length, present));
                expect(presses, `${region.name} from ${present}`).toBeLessThanOrEqual(25);
            }
        }
    });
});
