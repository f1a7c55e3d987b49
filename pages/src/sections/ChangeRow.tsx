import type { JSX } from 'preact';
import type { ChangeEvent } from 'settings-client';

import { usePage } from '../components/context';
import { lastChangeWords } from '../components/Explanation';
import { Panel } from '../components/Panel';
import { Row } from '../components/Row';
import { RowStatus } from '../components/RowStatus';
import { useDialog } from '../components/useDialog';
import { isReadOnly } from '../settings/catalogue';
import { nameOfSetting, wordsFor } from '../settings/format';
import { rows } from './rows';

interface Props {
    readonly change: ChangeEvent;
    /** Whether the row shows the result of undoing it. */
    readonly showsStatus: boolean;
    readonly onUndo: () => void;
}

/** A change: of what, from what to what, by whom and when. Enter offers to undo it. */
export function ChangeRow({ change, showsStatus, onUndo }: Props): JSX.Element {
    const { language } = usePage();
    const { key, from, to } = change;
    const panel = useDialog();
    const values = language.t('change.values', {
        from: wordsFor(key, from, language),
        to: wordsFor(key, to, language),
    });
    const who = whoAndWhen(change, language);
    return (
        <Row
            kind="opens"
            row={`change-${change.sequence}`}
            name={nameOfSetting(key, language)}
            value={values}
            explanation={<p>{who}</p>}
            opensDialog
            onUse={panel.open}
        >
            {showsStatus && <RowStatus setting={key} />}
            {panel.isOpen && (
                <UndoPanel change={change} onClose={panel.close} onUndo={onUndo}>
                    <p>{values}</p>
                    <p>{who}</p>
                </UndoPanel>
            )}
        </Row>
    );
}
