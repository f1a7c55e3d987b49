import type { RefObject } from 'preact';
import { useRef } from 'preact/hooks';

import { isForPage } from '../focus/keys';
import { directionOf, focusOn } from '../focus/navigation';
import type { LetterGroup } from './letters';
import { moved, type Place } from './moves';

const columns = ['rows', 'cities', 'letters'] as const;

/** The controls of a column of the panel, which is marked with `data-column`. */
function controlsOf(panel: Element, column: Place['column']): HTMLElement[] {
    return [...panel.querySelectorAll<HTMLElement>(`[data-column="${column}"] :is(button, input)`)];
}

/** `city`: the one to which the focus returns from the letters. */
function placeOfFocus(panel: Element, city: number): Place | null {
    for (const column of columns) {
        const index = controlsOf(panel, column).findIndex((control) => control === document.activeElement);
        if (index >= 0) {
            return column === 'letters' ? { column, index, city } : { column, index };
        }
    }
    return null;
}

export interface Arrows {
    readonly panel: RefObject<HTMLDivElement>;
    readonly focusAt: (column: Place['column'], index: number) => void;
    readonly handleKey: (event: KeyboardEvent) => void;
}

/** Moves the focus in the panel by arrows. `leave` goes back to the first step. */
export function useArrows(letters: readonly LetterGroup[], writing: 'ltr' | 'rtl', leave: () => void): Arrows {
    const panel = useRef<HTMLDivElement>(null);
    const city = useRef(0);
    const focusAt = (column: Place['column'], index: number) => {
        focusOn(panel.current === null ? undefined : controlsOf(panel.current, column)[index]);
    };
    const follow = (place: Place, cities: readonly HTMLElement[]) => {
        if (place.column === 'letters') {
            const isNew = city.current !== place.city;
            city.current = place.city;
            cities[place.city]?.scrollIntoView({ block: isNew ? 'start' : 'nearest' });
        }
        focusAt(place.column, place.index);
    };
    const handleKey = (event: KeyboardEvent) => {
        const direction = directionOf(event.key, writing);
        const isSideways = direction === 'forward' || direction === 'back';
        const place = panel.current && placeOfFocus(panel.current, city.current);
        const isForField = isSideways && document.activeElement instanceof HTMLInputElement;
        if (place === null || direction === null || isForField || !isForPage(event) || panel.current === null) {
            return;
        }
        event.preventDefault();
        const cities = controlsOf(panel.current, 'cities');
        const rows = controlsOf(panel.current, 'rows').length;
        const next = moved(place, direction, { rows, cities: cities.length, letters });
        if (next === null) {
            leave();
        } else {
            follow(next, cities);
        }
    };
    return { panel, focusAt, handleKey };
}
