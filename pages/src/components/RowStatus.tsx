import type { JSX } from 'preact';

import { usePage } from './page';

const signs = { saving: '…', accepted: '✓', unchanged: '=', refused: '✕' } as const;

/** What became of the last change of a setting. Always there, so that it is read out when it changes. */
export function RowStatus({ setting }: { readonly setting: string }): JSX.Element {
    const { state, language } = usePage();
    const status = state.rows[setting];
    const words = () => {
        if (status === undefined) {
            return '';
        }
        return status.kind === 'refused'
            ? language.t('refused', { reason: language.t(`reason.${status.reason}`) })
            : language.t(status.kind);
    };
    return (
        <p class="status" role="status" data-kind={status?.kind}>
            {status !== undefined && <span aria-hidden="true">{signs[status.kind]} </span>}
            {words()}
        </p>
    );
}
