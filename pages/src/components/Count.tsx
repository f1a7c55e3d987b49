import type { JSX } from 'preact';

import { usePage } from './context';

/** How many results a search has; null without a search. */
export function Count({ of: results }: { readonly of: number | null }): JSX.Element {
    const { t } = usePage().language;
    const words = (count: number) => (count === 0 ? t('search.nothing') : t('search.found', { count: `${count}` }));
    return (
        <p class="about" role="status">
            {results !== null && words(results)}
        </p>
    );
}
