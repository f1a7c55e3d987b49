/** What the Back key of a remote control is called. */
const backKeys = new Set(['Escape', 'GoBack', 'BrowserBack', 'XF86Back']);

export function isBack(key: string): boolean {
    return backKeys.has(key);
}

function dropRepeated(event: KeyboardEvent): void {
    if (event.repeat && (event.key === 'Enter' || isBack(event.key))) {
        event.preventDefault();
        event.stopPropagation();
    }
}

/** A key that is held repeats itself. Arrows go on then; what acts, acts once for each press. */
export function actOncePerPress(): void {
    document.addEventListener('keydown', dropRepeated, { capture: true });
}
