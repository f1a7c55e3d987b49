import type { RefObject } from 'preact';
import { useRef } from 'preact/hooks';

import { isForPage, isTyped } from '../focus/keys';
import { directionOf, focusOn, type Direction } from '../focus/navigation';

import { moved, type Place } from './moves';
import type { Letter } from './zones';

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

/** A key that acts on the control that has the focus. */
export type Key = Direction | 'enter';

/** Null for the keys that edit a text. */
export function keyOf({ key, target }: KeyboardEvent, writing: 'ltr' | 'rtl'): Key | null {
    const isCaret = /Left|Right/.test(key) && target instanceof HTMLInputElement;
    return key === 'Enter' ? 'enter' : isCaret ? null : directionOf(key, writing);
}

export interface Arrows {
    readonly panel: RefObject<HTMLDivElement>;
    /** Returns: false when there is no such control. */
    readonly focusAt: (column: Place['column'], index: number) => boolean;
    readonly handleKey: (event: KeyboardEvent) => void;
    /** Does what a key would have done that was pressed too early. */
    readonly use: (key: Key) => void;
}

/**
 * Moves the focus in the panel by arrows; what is typed goes to the search. `leave` goes back to the first step, `search` too,
 * with a text.
 */
export function useArrows(
    letters: readonly Letter[],
    writing: 'ltr' | 'rtl',
    leave: () => void,
    search: (text: string) => void,
): Arrows {
    const panel = useRef<HTMLDivElement>(null);
    const city = useRef(0);
    const controls = (column: Place['column']) => (panel.current === null ? [] : controlsOf(panel.current, column));
    const focusAt = (column: Place['column'], index: number) => focusOn(controls(column)[index]);
    const follow = (place: Place) => {
        if (place.column === 'letters') {
            const isNew = city.current !== place.city;
            city.current = place.city;
            controls('cities')[place.city]?.scrollIntoView({ block: isNew ? 'start' : 'nearest' });
        }
        focusAt(place.column, place.index);
    };
    const move = (place: Place, direction: Direction) => {
        const columns = { rows: controls('rows').length, cities: controls('cities').length, letters };
        const next = moved(place, direction, columns);
        if (next === null) {
            leave();
        } else {
            follow(next);
        }
    };
    const present = () => panel.current && placeOfFocus(panel.current, city.current);
    const use = (key: Key) => {
        const { activeElement } = document;
        const place = present();
        if (key !== 'enter') {
            if (place !== null) {
                move(place, key);
            }
        } else if (activeElement instanceof HTMLInputElement) {
            focusAt('rows', 1);
        } else if (activeElement instanceof HTMLElement) {
            activeElement.click();
        }
    };
    const handleKey = (event: KeyboardEvent) => {
        const key = keyOf(event, writing);
        const place = present();
        if (!isForPage(event)) {
            return;
        }
        if (key !== null && key !== 'enter' && place !== null) {
            event.preventDefault();
            move(place, key);
        } else if (isTyped(event) && !focusAt('rows', 0)) {
            event.preventDefault();
            search(event.key);
        }
    };
    return { panel, focusAt, handleKey, use };
}
