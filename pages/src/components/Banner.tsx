import type { JSX } from 'preact';

import { usePage } from '../settings/format';

/** Says that the television is not there, and what can be done. */
export function Banner({ onRetry }: { readonly onRetry: () => void }): JSX.Element {
    const { state, language } = usePage();
    const isLost = state.connection === 'lost';
    return (
        <div role="alert" class="banner" data-connection={state.connection}>
            {isLost && (
                <>
                    <span>{language.t('connection.lost')}</span>
                    <button type="button" class="button" onClick={onRetry}>
                        {language.t('connection.retry')}
                    </button>
                </>
            )}
            {state.connection === 'locked-out' && <span>{language.t('connection.locked')}</span>}
        </div>
    );
}
