/**
 * Moves the focus by arrow keys to the control that is drawn in that direction. A zone (the menu, the list of a section, an
 * open dialog) contains rows, marked with `data-row`; a row contains controls, in one or more lines. Up and down change the
 * line, forward and back (left or right, by the writing direction) the control within it. Nothing wraps around. A control that
 * reorders or destroys something is marked with `data-tool`: only arrows lead to it.
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

/** The focusable controls of a zone, in document order. */
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

/** Rows with the same parent may be drawn side by side; others may be scrolled apart, so that their boxes do not compare. */
function isBeside(one: Drawn, other: Drawn): boolean {
    const together = one.row === other.row || one.row?.parentElement === other.row?.parentElement;
    return together && one.box.top < other.box.bottom && other.box.top < one.box.bottom;
}

function linesOf(zone: Element): Drawn[][] {
    const lines: Drawn[][] = [];
    for (const item of rowsOf(zone).flat()) {
        const drawn = { item, row: rowOf(item), box: item.getBoundingClientRect() };
        // A tool that is there only while its row is used.
        if (drawn.box.width === 0) {
            continue;
        }
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

/** Whether it is the chosen one of several choices; a line of choices is entered there. */
function isChosen(item: HTMLElement): boolean {
    return item.getAttribute('role') === 'radio' && item.getAttribute('aria-checked') === 'true';
}

function isNeutral(item: HTMLElement): boolean {
    return item.dataset['tool'] === undefined;
}

/** The control above or below `from`: the one with the smallest gap sideways, then the one whose start is closest. */
function nearest(line: readonly Drawn[], from: Drawn): HTMLElement | undefined {
    const rightToLeft = getComputedStyle(from.item).direction === 'rtl';
    const gap = ({ box }: Drawn) => Math.max(0, box.left - from.box.right, from.box.left - box.right);
    const startDistance = ({ box }: Drawn) =>
        Math.abs(rightToLeft ? box.right - from.box.right : box.left - from.box.left);
    const entered = line.find(({ item, row }) => row !== from.row && isChosen(item));
    const [first] = [...line].sort((one, other) => gap(one) - gap(other) || startDistance(one) - startDistance(other));
    return (entered ?? first)?.item;
}

export function focusOn(item: HTMLElement | undefined): boolean {
    item?.focus({ preventScroll: true });
    rowOf(item)?.scrollIntoView({ block: 'nearest' });
    return item !== undefined;
}

/** Focuses the first control that is not a tool. */
export function focusFirst(zone: Element): boolean {
    const items = rowsOf(zone).flat();
    return focusOn(items.find(isNeutral) ?? items[0]);
}

/** Focuses the chosen one of several choices, else the first control. */
export function focusChosen(zone: Element): boolean {
    const chosen = controlsOf(zone).find(isChosen);
    return chosen === undefined ? focusFirst(zone) : focusOn(chosen);
}

/** Returns: false when there is no control in that direction. */
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

/** The direction of an arrow key; null for other keys. */
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

/** The position of a control, which survives rendering: the name of its row, and which control of the row it is. */
export interface Position {
    readonly row: string;
    readonly rowNumber: number;
    readonly column: number;
    /** The action of the control (`data-tool`). */
    readonly tool: string | undefined;
}

export function positionOf(zone: Element, item: HTMLElement | null): Position | null {
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

/** Focuses a position, or the row that replaced it when its row is gone. Another tool is never focused instead. */
export function restoreFocus(zone: Element, position: Position | null): boolean {
    const rows = rowsOf(zone);
    if (position === null || rows.length === 0) {
        return focusFirst(zone);
    }
    const named = rows.find(([first]) => rowOf(first)?.dataset['row'] === position.row);
    const row = named ?? rows[Math.min(position.rowNumber, rows.length - 1)] ?? [];
    const item =
        position.tool === undefined
            ? row[Math.min(position.column, row.length - 1)]
            : named?.find((candidate) => candidate.dataset['tool'] === position.tool);
    const taken = item !== undefined && item.dataset['tool'] === position.tool ? item : row.find(isNeutral);
    return taken === undefined ? focusFirst(zone) : focusOn(taken);
}

/** Focuses the first control of a row, whatever it does. Returns: false when there is no such row. */
export function focusRow(zone: Element, name: string): boolean {
    return focusOn(controlsOf(zone).find((item) => rowOf(item)?.dataset['row'] === name));
}

/** Focuses a position when its section is entered again, but never a tool. */
export function enterPosition(zone: Element, position: Position | null): boolean {
    return restoreFocus(zone, position?.tool === undefined ? position : { ...position, column: 0, tool: undefined });
}
