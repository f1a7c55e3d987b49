import type { JSX } from 'preact';
import type { SettingKey } from 'settings-client';

import { shortened, wordsFor } from '../settings/format';
import type { Refused } from '../state/store';
import { usePage } from './context';

const signs = { saving: '…', accepted: '✓', default: '✓', unchanged: '=', refused: '✕', draft: '✎' } as const;

/** The result of the last change of a setting. Always in the page, so that screen readers announce its changes. */
export function RowStatus({ setting }: { readonly setting: SettingKey }): JSX.Element {
    const { store, state, language } = usePage();
    const draft = store.drafts.get(setting);
    const status = state.rows[setting];
    const kind = status?.kind ?? (draft === undefined ? undefined : 'draft');
    const words = () => {
        switch (kind) {
            case undefined:
                return '';
            case 'refused':
                return language.t(`refused.${(status as Refused).reason}`);
            case 'default':
                return language.t(kind, { value: wordsFor(setting, state.values?.[setting], language) });
            case 'draft':
                return language.t(kind, { value: shortened(draft?.parts.join(' · ') ?? '') });
            default:
                return language.t(kind);
        }
    };
    return (
        <p class="status" role="status" data-kind={kind}>
            {kind !== undefined && <span aria-hidden="true">{signs[kind]} </span>}
            {words()}
        </p>
    );
}
