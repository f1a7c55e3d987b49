import type { JSX } from 'preact';
import type { ChangeEvent } from 'settings-client';

import { usePage } from '../components/context';
import { Row } from '../components/Row';
import { RowStatus } from '../components/RowStatus';
import { useDialog } from '../components/useDialog';
import type { Language } from '../i18n/language';
import { changedBy } from '../settings/changedBy';
import { nameOfSetting, wordsFor } from '../settings/format';
import { UndoDialog } from './UndoDialog';

interface Props {
    readonly change: ChangeEvent;
    /** Whether the row shows the result of undoing it. */
    readonly showsStatus: boolean;
    readonly onUndo: () => void;
}

/** The values of a change in words. */
export function valuesOf({ key, from, to }: ChangeEvent, language: Language): string {
    return language.t('change.values', { from: wordsFor(key, from, language), to: wordsFor(key, to, language) });
}

/** A change: of what, from what to what, by whom and when. Enter offers to undo it. */
export function ChangeRow({ change, showsStatus, onUndo }: Props): JSX.Element {
    const { language } = usePage();
    const dialog = useDialog();
    return (
        <Row
            kind="opens"
            row={`change-${change.sequence}`}
            name={nameOfSetting(change.key, language)}
            value={
                <>
                    {valuesOf(change, language)}
                    <span class="change">{changedBy(change, language)}</span>
                </>
            }
            opensDialog
            onUse={dialog.open}
        >
            {showsStatus && <RowStatus setting={change.key} />}
            {dialog.isOpen && <UndoDialog change={change} onClose={dialog.close} onUndo={onUndo} />}
        </Row>
    );
}
