import type { JSX } from 'preact';
import { useEffect, useState } from 'preact/hooks';

import { Dialog } from '../components/Dialog';
import { usePage, wordsFor } from '../settings/format';
import { ReadOnlyRow } from '../components/ReadOnlyRow';

const actionWords = {
    opened: 'openSettings.done',
    'logged-out': 'logOut.done',
    failed: 'action.failed',
} as const;

export function AccountSection(): JSX.Element {
    const { store, state, language } = usePage();
    const { t } = language;
    const [asking, setAsking] = useState(false);
    useEffect(
        () => () => {
            store.forgetAction();
        },
        [store],
    );
    const entitlement = state.values?.['tovanEntitlementStatus'];
    const selected = state.selected === null ? t('unknown') : t(state.selected ? 'selected.yes' : 'selected.no');
    return (
        <>
            <ReadOnlyRow
                name={t('tovanEntitlementStatus')}
                value={wordsFor('tovanEntitlementStatus', entitlement, language)}
            />
            <ReadOnlyRow name={t('selected')} value={selected} />
            <div class="row" data-row="open-settings">
                <button
                    type="button"
                    class="control"
                    onClick={() => {
                        store.openSettings();
                    }}
                >
                    <span class="name">{t('openSettings')}</span>
                </button>
            </div>
            <div class="row" data-row="log-out">
                <button
                    type="button"
                    class="control danger"
                    data-tool="log-out"
                    aria-haspopup="dialog"
                    onClick={() => {
                        setAsking(true);
                    }}
                >
                    <span class="name">{t('logOut')}</span>
                </button>
            </div>
            <p class="status" role="status" data-kind={state.action === 'failed' ? 'refused' : 'accepted'}>
                {state.action !== 'none' && (
                    <>
                        <span aria-hidden="true">{state.action === 'failed' ? '✕ ' : '✓ '}</span>
                        {t(actionWords[state.action])}
                    </>
                )}
            </p>
            {asking && (
                <Dialog
                    title={t('logOut.question')}
                    onClose={() => {
                        setAsking(false);
                    }}
                >
                    <p>{t('logOut.about')}</p>
                    <div class="buttons" data-row="answer">
                        <button
                            type="button"
                            class="button primary"
                            onClick={() => {
                                setAsking(false);
                            }}
                        >
                            {t('cancel')}
                        </button>
                        <button
                            type="button"
                            class="button danger"
                            onClick={() => {
                                setAsking(false);
                                void store.logOut();
                            }}
                        >
                            {t('logOut')}
                        </button>
                    </div>
                </Dialog>
            )}
        </>
    );
}
