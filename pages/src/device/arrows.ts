import { isForPage } from '../focus/keys';
import { controlsOf, directionOf, focusFirst, focusOn, moveFocus, type Direction } from '../focus/navigation';

/** Whether the focused element uses this arrow itself: a caret that can move, a text that can be scrolled. */
function needsArrow(active: Element | null, direction: Direction): boolean {
    const isSideways = direction === 'back' || direction === 'forward';
    if (active instanceof HTMLInputElement && isSideways) {
        const { selectionStart, selectionEnd, value } = active;
        return selectionStart !== selectionEnd || selectionStart !== (direction === 'back' ? 0 : value.length);
    }
    if (active instanceof HTMLPreElement && !isSideways) {
        const { scrollTop, clientHeight, scrollHeight } = active;
        return direction === 'up' ? scrollTop > 0 : scrollTop + clientHeight < scrollHeight - 1;
    }
    return false;
}

/** The distance from `from` to `to` in the direction; negative when it is not there. */
function distance(from: DOMRect, to: DOMRect, direction: Direction): number {
    return {
        up: from.top - to.bottom,
        down: to.top - from.bottom,
        back: from.left - to.right,
        forward: to.left - from.right,
    }[direction];
}

/** The distance across the direction; 0 when they overlap. */
function offset(from: DOMRect, to: DOMRect, direction: Direction): number {
    const across =
        direction === 'up' || direction === 'down' ? (['back', 'forward'] as const) : (['up', 'down'] as const);
    return Math.max(0, ...across.map((side) => distance(from, to, side)));
}

/** Moves the focus to the nearest control of another zone in the direction. */
function leave(zone: Element, active: Element, direction: Direction): void {
    const from = active.getBoundingClientRect();
    const candidates = [...document.querySelectorAll('[data-zone]')]
        .filter((other) => distance(zone.getBoundingClientRect(), other.getBoundingClientRect(), direction) >= 0)
        .flatMap((other) => controlsOf(other))
        .map((item) => ({ item, to: item.getBoundingClientRect() }))
        .sort(
            (one, other) =>
                offset(from, one.to, direction) - offset(from, other.to, direction) ||
                distance(from, one.to, direction) - distance(from, other.to, direction),
        );
    focusOn(candidates[0]?.item);
}

function press(event: KeyboardEvent): void {
    const active = document.activeElement;
    if (!isForPage(event)) {
        return;
    }
    if (event.key === 'Enter' && active instanceof HTMLSelectElement) {
        event.preventDefault();
        active.showPicker();
        return;
    }
    const direction = directionOf(event.key, 'ltr');
    if (direction === null || needsArrow(active, direction)) {
        return;
    }
    event.preventDefault();
    const zone = active?.closest('[data-zone]') ?? null;
    if (active === null || zone === null) {
        focusFirst(document.body);
    } else if (!moveFocus(zone, active, direction)) {
        leave(zone, active, direction);
    }
}

/** Moves the focus by arrows and opens choices by Enter. The page is divided into zones, marked with `data-zone`. */
export function moveByArrows(): void {
    document.addEventListener('keydown', press);
}
