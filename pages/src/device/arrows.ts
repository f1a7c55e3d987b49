import { controlsOf, directionOf, focusFirst, focusOn, moveFocus, type Direction } from '../focus/navigation';

/** Does what has the focus need this arrow itself: a caret that can still go there, a text that can still be scrolled? */
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

/** How far `to` lies beyond `from` in the direction; less than nothing when it does not. */
function distance(from: DOMRect, to: DOMRect, direction: Direction): number {
    switch (direction) {
        case 'up':
            return from.top - to.bottom;
        case 'down':
            return to.top - from.bottom;
        case 'back':
            return from.left - to.right;
        case 'forward':
            return to.left - from.right;
    }
}

/** How far one must go aside to get from one to the other. */
function aside(from: DOMRect, to: DOMRect, direction: Direction): number {
    const [before, after] =
        direction === 'up' || direction === 'down' ? (['back', 'forward'] as const) : (['up', 'down'] as const);
    return Math.max(0, distance(from, to, before), distance(from, to, after));
}

/** Goes to the nearest control of what is drawn beside, above or below this part of the page. */
function leave(zone: Element, active: Element, direction: Direction): void {
    const from = active.getBoundingClientRect();
    const ways = [...document.querySelectorAll('[data-zone]')]
        .filter((other) => distance(zone.getBoundingClientRect(), other.getBoundingClientRect(), direction) >= 0)
        .flatMap((other) => controlsOf(other))
        .map((item) => ({ item, to: item.getBoundingClientRect() }))
        .sort(
            (one, other) =>
                aside(from, one.to, direction) - aside(from, other.to, direction) ||
                distance(from, one.to, direction) - distance(from, other.to, direction),
        );
    focusOn(ways[0]?.item);
}

function press(event: KeyboardEvent): void {
    const active = document.activeElement;
    if (event.defaultPrevented || event.isComposing || event.ctrlKey || event.altKey || event.metaKey) {
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

/** Makes the page usable with four arrows and Enter. It is divided into zones, marked with `data-zone`. */
export function moveByArrows(): void {
    document.addEventListener('keydown', press);
}
