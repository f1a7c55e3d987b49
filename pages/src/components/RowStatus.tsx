import type { JSX } from 'preact';
import type { SettingKey } from 'settings-client';

import { Icon, type IconName } from '../icons';
import { shortened, wordsFor } from '../settings/format';
import type { RowStatus as Status } from '../state/store';
import { usePage } from './context';

const icons = {
    saving: 'waiting',
    accepted: 'done',
    default: 'done',
    unchanged: 'same',
    refused: 'failed',
    draft: 'edit',
} as const satisfies Record<string, IconName>;

/** The result of the last change of a setting. Always in the page, so that screen readers announce its changes. */
export function RowStatus({ setting }: { readonly setting: SettingKey }): JSX.Element {
    const { store, state, language } = usePage();
    const draft = store.drafts.get(setting);
    const status = state.rows[setting];
    const kind = status?.kind ?? (draft === undefined ? undefined : 'draft');
    const isBrief = kind !== 'refused' && kind !== 'draft' && kind !== 'default';
    const words = () => {
        switch (kind) {
            case undefined:
                return '';
            case 'refused':
                return status?.kind === kind ? language.t(`refused.${status.reason}`) : '';
            case 'default':
                return language.t(kind, { value: wordsFor(setting, state.values?.[setting], language) });
            case 'draft':
                return language.t(kind, { value: shortened(draft?.parts.join(' · ') ?? '') });
            default:
                return language.t(kind);
        }
    };
    return (
        <>
            <p class={isBrief ? 'status brief' : 'status'} role="status" data-kind={kind}>
                {kind !== undefined && <Icon name={icons[kind]} />}
                {words()}
            </p>
            <TryAgain setting={setting} status={status} />
        </>
    );
}

interface TryAgainProps {
    readonly setting: SettingKey;
    readonly status: Status | undefined;
}

/** Offers a change again that may succeed the next time. */
function TryAgain({ setting, status }: TryAgainProps): JSX.Element | null {
    const { store, language } = usePage();
    if (status?.kind !== 'refused' || status.reason === 'read-only' || status.reason === 'too-long') {
        return null;
    }
    return (
        <div class="buttons">
            <button
                type="button"
                class="button"
                onClick={() => {
                    void store.set(setting, status.to);
                }}
            >
                {language.t('edit.tryAgain')}
            </button>
        </div>
    );
}
