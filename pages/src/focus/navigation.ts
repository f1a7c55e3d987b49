/**
 * Arrow keys lead to what is drawn there. A zone (the menu, the panel of a section, an open dialog) holds rows, marked with
 * `data-row`; a row holds one or more controls, and what does not fit beside the others is drawn in another line. Up and down
 * change the line, forward and back (which is which depends on the writing direction) the control within it. Nothing wraps
 * around. A control that changes an order or destroys something is marked with `data-tool`: only arrows lead to it.
 */
export type Direction = 'up' | 'down' | 'forward' | 'back';

const focusable = 'button:not(:disabled), input:not(:disabled), select, [tabindex="0"]';

function rowsOf(zone: Element): HTMLElement[][] {
    const rows = new Map<Element | null, HTMLElement[]>();
    for (const item of controlsOf(zone)) {
        const row = rowOf(item);
        rows.set(row, [...(rows.get(row) ?? []), item]);
    }
    return [...rows.values()];
}

/** What can take the focus in a zone, in the order of the page. */
export function controlsOf(zone: Element): HTMLElement[] {
    return [...zone.querySelectorAll<HTMLElement>(focusable)].filter((item) => rowOf(item) !== null);
}

function rowOf(item: Element | null | undefined): HTMLElement | null {
    return item?.closest<HTMLElement>('[data-row]') ?? null;
}

interface Drawn {
    readonly item: HTMLElement;
    readonly row: HTMLElement | null;
    readonly box: DOMRect;
}

/** Rows that share a parent may be drawn side by side; others may be scrolled apart, so that their places say nothing. */
function isBeside(one: Drawn, other: Drawn): boolean {
    const together = one.row === other.row || one.row?.parentElement === other.row?.parentElement;
    return together && one.box.top < other.box.bottom && other.box.top < one.box.bottom;
}

function linesOf(zone: Element): Drawn[][] {
    const lines: Drawn[][] = [];
    for (const item of rowsOf(zone).flat()) {
        const drawn = { item, row: rowOf(item), box: item.getBoundingClientRect() };
        const line = lines.at(-1);
        const before = line?.at(-1);
        if (before !== undefined && isBeside(before, drawn)) {
            line?.push(drawn);
        } else {
            lines.push([drawn]);
        }
    }
    return lines;
}

/** Is it the chosen one of several choices? A line of choices is entered there. */
function isChosen(item: HTMLElement): boolean {
    return item.getAttribute('role') === 'radio' && item.getAttribute('aria-checked') === 'true';
}

function isNeutral(item: HTMLElement): boolean {
    return item.dataset['tool'] === undefined;
}

/** What stands above or below `from`: with the least between their sides, then where both begin alike. */
function nearest(line: readonly Drawn[], from: Drawn): HTMLElement | undefined {
    const rightToLeft = getComputedStyle(from.item).direction === 'rtl';
    const between = ({ box }: Drawn) => Math.max(0, box.left - from.box.right, from.box.left - box.right);
    const apart = ({ box }: Drawn) => Math.abs(rightToLeft ? box.right - from.box.right : box.left - from.box.left);
    const entered = line.find(({ item, row }) => row !== from.row && isChosen(item));
    const [first] = [...line].sort((one, other) => between(one) - between(other) || apart(one) - apart(other));
    return (entered ?? first)?.item;
}

export function focusOn(item: HTMLElement | undefined): boolean {
    item?.focus({ preventScroll: true });
    rowOf(item)?.scrollIntoView({ block: 'nearest' });
    return item !== undefined;
}

/** The first control that does no harm when it is used by mistake. */
export function focusFirst(zone: Element): boolean {
    const items = rowsOf(zone).flat();
    return focusOn(items.find(isNeutral) ?? items[0]);
}

/** Returns: false when there is nothing in that direction. */
export function moveFocus(zone: Element, active: Element | null, direction: Direction): boolean {
    const lines = linesOf(zone);
    const number = lines.findIndex((line) => line.some(({ item }) => item === active));
    const line = lines[number];
    const column = line?.findIndex(({ item }) => item === active) ?? -1;
    const from = line?.[column];
    if (from === undefined) {
        return focusFirst(zone);
    }
    if (direction === 'up' || direction === 'down') {
        return focusOn(nearest(lines[direction === 'up' ? number - 1 : number + 1] ?? [], from));
    }
    return focusOn(line?.[direction === 'back' ? column - 1 : column + 1]?.item);
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
    const row = rowOf(item);
    if (rowNumber < 0 || row === null) {
        return null;
    }
    return {
        row: row.dataset['row'] ?? '',
        rowNumber,
        column: rows[rowNumber]?.findIndex((candidate) => candidate === item) ?? 0,
        tool: item?.dataset['tool'],
    };
}

/** Focuses the place, or, when its row is gone, the one that took its place. Where its tool is gone no other is taken. */
export function restoreFocus(zone: Element, place: Place | null): boolean {
    const rows = rowsOf(zone);
    if (place === null || rows.length === 0) {
        return focusFirst(zone);
    }
    const named = rows.find(([first]) => rowOf(first)?.dataset['row'] === place.row);
    const row = named ?? rows[Math.min(place.rowNumber, rows.length - 1)] ?? [];
    const item =
        place.tool === undefined
            ? row[Math.min(place.column, row.length - 1)]
            : named?.find((candidate) => candidate.dataset['tool'] === place.tool);
    const taken = item !== undefined && item.dataset['tool'] === place.tool ? item : row.find(isNeutral);
    return taken === undefined ? focusFirst(zone) : focusOn(taken);
}

/** Focuses the place again after a look elsewhere, but nothing that would do harm at once. */
export function enterPlace(zone: Element, place: Place | null): boolean {
    return restoreFocus(zone, place?.tool === undefined ? place : { ...place, column: 0, tool: undefined });
}
