/** The address of the host: the page's own, or, in a development build, where `host` says. */
export function hostAddress(): string {
    if (import.meta.env.DEV) {
        const parameters = new URLSearchParams(location.search);
        const host = parameters.get('host');
        if (host !== null) {
            return `http://${host}/?key=${encodeURIComponent(parameters.get('key') ?? '')}`;
        }
    }
    return location.origin;
}

/** Removes the key from the address bar, where others could read it; from now on the cookie authenticates the page. */
export function hideKey(): void {
    if (!import.meta.env.DEV && location.search !== '') {
        history.replaceState(null, '', location.pathname + location.hash);
    }
}

/** What others see beside changes of this page, such as "settings page (Android)". */
export function pageName(): string {
    const { userAgentData } = navigator as { readonly userAgentData?: { readonly platform?: string } };
    const platform = userAgentData?.platform ?? '';
    return platform === '' ? 'settings page' : `settings page (${platform})`;
}
