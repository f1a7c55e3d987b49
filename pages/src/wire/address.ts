/** Where a WebSocket of the host is: beside this page, or, while pages are developed elsewhere, where the address says. */
export function webSocketAddress(path: string, page: Location = location): string {
    if (import.meta.env.DEV) {
        const asked = new URLSearchParams(page.search);
        const host = asked.get('host');
        if (host !== null) {
            return `ws://${host}${path}?key=${encodeURIComponent(asked.get('key') ?? '')}`;
        }
    }
    return `${page.protocol === 'https:' ? 'wss' : 'ws'}://${page.host}${path}`;
}

/** Takes the key out of the address bar, where it would be seen on the screen; the cookie opens the door from now on. */
export function hideKey(): void {
    if (!import.meta.env.DEV && location.search !== '') {
        history.replaceState(null, '', location.pathname + location.hash);
    }
}
