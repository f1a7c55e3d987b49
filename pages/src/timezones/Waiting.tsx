import type { JSX } from 'preact';
import { useLayoutEffect, useRef } from 'preact/hooks';

import { usePage } from '../components/context';
import type { Loading } from './useZones';

/** In place of the time zones while they are loaded, or when they could not be. */
export function Waiting({ hasFailed, tryAgain }: Loading): JSX.Element {
    const { t } = usePage().language;
    const status = useRef<HTMLParagraphElement>(null);
    const button = useRef<HTMLButtonElement>(null);
    useLayoutEffect(() => {
        (button.current ?? status.current)?.focus();
    }, [hasFailed]);
    return (
        <div data-row="retry">
            {/* Has the focus first, because the search would open the keyboard of a phone. */}
            <p ref={status} class="about" role="status" tabIndex={-1} autofocus>
                {t(hasFailed ? 'refused.no-reply' : 'page.loading')}
            </p>
            {hasFailed && (
                <button ref={button} type="button" class="button" onClick={tryAgain}>
                    {t('edit.tryAgain')}
                </button>
            )}
        </div>
    );
}
