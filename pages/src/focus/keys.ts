/** The names of a remote control's Back key. */
const backKeys = new Set(['Escape', 'GoBack', 'BrowserBack', 'XF86Back']);

export function isBack(key: string): boolean {
    return backKeys.has(key);
}

/** Whether it is the search key of a remote control or a keyboard. */
export function isSearch(key: string): boolean {
    return key === 'BrowserSearch' || key === 'F3';
}

/** Whether a key press is left to the page: not handled yet, not part of text input, no shortcut of the browser. */
export function isForPage(event: KeyboardEvent): boolean {
    return !(event.defaultPrevented || event.isComposing || event.ctrlKey || event.altKey || event.metaKey);
}

/** Whether it is a letter or digit that is typed outside of a text field. */
export function isTyped(event: KeyboardEvent): boolean {
    return (
        isForPage(event) && event.key.length === 1 && event.key !== ' ' && !(event.target instanceof HTMLInputElement)
    );
}

function dropRepeated(event: KeyboardEvent): void {
    if (event.repeat && (event.key === 'Enter' || isBack(event.key))) {
        event.preventDefault();
        event.stopPropagation();
    }
}

/** Drops repeats of Enter and Back while they are held, so that an action runs once a press. Arrows repeat. */
export function ignoreRepeatedActions(): void {
    document.addEventListener('keydown', dropRepeated, { capture: true });
}
