import type { JSX } from 'preact';
import { useEffect } from 'preact/hooks';

import { usePage } from '../components/context';
import { ReadOnlyRow } from '../components/ReadOnlyRow';
import { Row } from '../components/Row';
import { useDialog } from '../components/useDialog';
import { Icon } from '../icons';
import { LogOutDialog } from './LogOutDialog';

const actionTexts = {
    opened: 'openSettings.done',
    'logged-out': 'logOut.done',
    failed: 'action.failed',
    refused: 'action.refused',
} as const;

/** What the account section shows besides settings: the selected assistant, and actions. */
export function AccountActions(): JSX.Element {
    const { store, state, language } = usePage();
    const { t } = language;
    const dialog = useDialog();
    useEffect(
        () => () => {
            store.clearAction();
        },
        [store],
    );
    const selected = state.selected === null ? t('value.unknown') : t(state.selected ? 'selected.yes' : 'selected.no');
    return (
        <>
            <ReadOnlyRow row="selected" name={t('selected.name')} value={selected} />
            <Row
                kind="acts"
                row="open-settings"
                icon="external"
                name={t('action.openSettings')}
                onUse={() => {
                    void store.openSettings();
                }}
            />
            <Row
                kind="acts"
                row="log-out"
                icon="exit"
                name={t('action.logOut')}
                isDestructive
                opensDialog
                onUse={dialog.open}
            />
            <ActionStatus />
            {dialog.isOpen && <LogOutDialog onClose={dialog.close} />}
        </>
    );
}

function ActionStatus(): JSX.Element {
    const { state, language } = usePage();
    const { action } = state;
    const isFailure = action === 'failed' || action === 'refused';
    return (
        <p class="status" role="status" data-kind={isFailure ? 'refused' : 'accepted'}>
            {action !== 'none' && (
                <>
                    <Icon name={isFailure ? 'failed' : 'done'} />
                    {language.t(actionTexts[action])}
                </>
            )}
        </p>
    );
}
