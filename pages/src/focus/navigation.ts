/**
 * Arrow keys over rows. A zone (the menu, the panel of a section, an open dialog) holds rows, marked with `data-row`; a row holds
 * one or more controls. Up and down change the row, forward and back (which is which depends on the writing direction)
 * the control within it. Nothing wraps around.
 */
export type Direction = 'up' | 'down' | 'forward' | 'back';

const focusable = 'button:not(:disabled), input:not(:disabled), [tabindex="0"]';

function rowsOf(zone: Element): HTMLElement[][] {
    return [...zone.querySelectorAll('[data-row]')]
        .map((row) =>
            [...row.querySelectorAll<HTMLElement>(focusable)].filter((item) => item.closest('[data-row]') === row),
        )
        .filter((items) => items.length > 0);
}

/** Is it the chosen one of several choices? A row of choices is entered there. */
function isChosen(item: HTMLElement): boolean {
    return item.getAttribute('role') === 'radio' && item.getAttribute('aria-checked') === 'true';
}

export function focusOn(item: HTMLElement | undefined): boolean {
    item?.focus({ preventScroll: true });
    item?.closest('[data-row]')?.scrollIntoView({ block: 'nearest' });
    return item !== undefined;
}

export function focusFirst(zone: Element): boolean {
    return focusOn(rowsOf(zone)[0]?.[0]);
}

/** Returns: false when there is nothing in that direction. */
export function moveFocus(zone: Element, active: Element | null, direction: Direction): boolean {
    const rows = rowsOf(zone);
    const row = rows.findIndex((items) => items.some((item) => item === active));
    const column = rows[row]?.findIndex((item) => item === active) ?? -1;
    if (row < 0) {
        return focusFirst(zone);
    }
    if (direction === 'up' || direction === 'down') {
        const next = rows[direction === 'up' ? row - 1 : row + 1];
        return focusOn(next?.find(isChosen) ?? next?.[Math.min(column, next.length - 1)]);
    }
    return focusOn(rows[row]?.[direction === 'back' ? column - 1 : column + 1]);
}

/** What a key press means; null when it is none of the arrows. */
export function directionOf(key: string, writing: 'ltr' | 'rtl'): Direction | null {
    switch (key) {
        case 'ArrowUp':
            return 'up';
        case 'ArrowDown':
            return 'down';
        case 'ArrowRight':
            return writing === 'ltr' ? 'forward' : 'back';
        case 'ArrowLeft':
            return writing === 'ltr' ? 'back' : 'forward';
        default:
            return null;
    }
}

/** The place of a control that survives being drawn again: its row's name, and which control of the row it is. */
export interface Place {
    readonly row: string;
    readonly rowNumber: number;
    readonly column: number;
    /** What the control does, for those that come and go (`data-tool`). */
    readonly tool: string | undefined;
}

export function placeOf(zone: Element, item: HTMLElement | null): Place | null {
    const rows = rowsOf(zone);
    const rowNumber = rows.findIndex((items) => items.some((candidate) => candidate === item));
    const row = item?.closest<HTMLElement>('[data-row]');
    if (rowNumber < 0 || row === null || row === undefined) {
        return null;
    }
    return {
        row: row.dataset['row'] ?? '',
        rowNumber,
        column: rows[rowNumber]?.findIndex((candidate) => candidate === item) ?? 0,
        tool: item?.dataset['tool'],
    };
}

/** Focuses the place, or, when its row is gone, the one that took its place. */
export function restoreFocus(zone: Element, place: Place | null): boolean {
    const rows = rowsOf(zone);
    if (place === null || rows.length === 0) {
        return focusFirst(zone);
    }
    const named = rows.find((items) => items[0]?.closest<HTMLElement>('[data-row]')?.dataset['row'] === place.row);
    const row = named ?? rows[Math.min(place.rowNumber, rows.length - 1)];
    const column = Math.min(place.column, (row?.length ?? 0) - 1);
    const item = row?.[column];
    // What took the place of a control that is gone may do something else entirely, so the one before it is safer.
    return focusOn(item?.dataset['tool'] === place.tool ? item : row?.[Math.max(column - 1, 0)]);
}
