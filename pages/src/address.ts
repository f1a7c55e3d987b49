/** The address of a WebSocket of the host: on the origin of this page, or, in a development build, where `host` says. */
export function webSocketAddress(path: string, page: Location = location): string {
    if (import.meta.env.DEV) {
        const parameters = new URLSearchParams(page.search);
        const host = parameters.get('host');
        if (host !== null) {
            return `ws://${host}${path}?key=${encodeURIComponent(parameters.get('key') ?? '')}`;
        }
    }
    return `${page.protocol === 'https:' ? 'wss' : 'ws'}://${page.host}${path}`;
}

/** Removes the key from the address bar, where others could read it; from now on the cookie authenticates the page. */
export function hideKey(): void {
    if (!import.meta.env.DEV && location.search !== '') {
        history.replaceState(null, '', location.pathname + location.hash);
    }
}
