import type { JSX } from 'preact';

import type { Result } from './store';

/** What came of the last command of the page. */
export function ResultLine({ result }: { readonly result: Result | null }): JSX.Element {
    return (
        <p class="device-result" role="status" data-refused={result?.refused}>
            {result?.words}
        </p>
    );
}
