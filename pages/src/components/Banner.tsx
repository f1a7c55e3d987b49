import type { JSX } from 'preact';

import { usePage } from './context';

/** Reports a lost or refused connection. */
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
            {state.connection === 'unauthorized' && <span>{language.t('connection.unauthorized')}</span>}
        </div>
    );
}
