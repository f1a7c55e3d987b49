import type { JSX } from 'preact';

import { summary, visible } from './format';
import type { Result } from './store';
import { sayRequest } from './words';

function resultText({ command, outcome }: Result): string {
    const name = summary(sayRequest(command));
    if (!outcome.ok) {
        return `✗ ${visible(outcome.code)}: ${visible(outcome.message)} – ${name}`;
    }
    return outcome.changed === false ? `= No change: ${name}` : `✓ Done: ${name}`;
}

/** What came of the last command of the page. */
export function ResultLine({ result }: { readonly result: Result | null }): JSX.Element {
    return (
        <p class="device-result" role="status" data-outcome={result?.outcome.ok}>
            {result === null ? '' : resultText(result)}
        </p>
    );
}
