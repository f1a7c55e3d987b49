/**
 * Reads the browser's names of a language in a thread of its own: the first use of `Intl` keeps a slow processor busy for a tenth of
 * a second, which nobody should notice while they move through the menu.
 */
export function prepareIntl(code: string): void {
    // A browser without modules in threads goes without.
    new Worker(new URL('./intl.worker.ts', import.meta.url), { type: 'module', name: code });
}
