import type { JSX } from 'preact';

import { usePage } from './context';

/** Reports a lost or refused connection. */
export function Banner(): JSX.Element {
    const { store, state, language } = usePage();
    const isLost = state.connection === 'lost';
    return (
        <div role="alert" class="banner" data-connection={state.connection}>
            {isLost && (
                <>
                    <span>{language.t('connection.lost')}</span>
                    <button
                        type="button"
                        class="button"
                        onClick={() => {
                            store.retryNow();
                        }}
                    >
                        {language.t('connection.retry')}
                    </button>
                </>
            )}
            {state.connection === 'unauthorized' && <span>{language.t('connection.unauthorized')}</span>}
            {state.connection === 'unsupported' && <span>{language.t('connection.unsupported')}</span>}
        </div>
    );
}
