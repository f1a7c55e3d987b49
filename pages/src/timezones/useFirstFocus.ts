import { useLayoutEffect, useRef } from 'preact/hooks';

import type { Arrows } from './useArrows';
import type { Loading } from './useZones';
import { isNamed, type Region } from './zones';

/** Focuses the present city of a region that was opened; in the first step the search, or the region that was left. */
export function useFirstFocus(
    { regions }: Loading,
    region: Region | null,
    value: string | undefined,
    isSearching: boolean,
    focusAt: Arrows['focusAt'],
): void {
    const opened = useRef<Region | null>(null);
    useLayoutEffect(() => {
        if (regions === null) {
            return;
        }
        if (region !== null) {
            const present = region.zones.findIndex((zone) => isNamed(zone, value));
            focusAt('cities', Math.max(0, present));
        } else {
            // Below the search, and the present zone if there is one.
            const first = value ? 2 : 1;
            const before = opened.current === null ? 1 : first + regions.indexOf(opened.current);
            focusAt('rows', isSearching ? 0 : before);
        }
        opened.current = region;
    }, [region, regions === null]);
}
