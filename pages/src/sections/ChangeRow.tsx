import type { JSX } from 'preact';
import type { ChangeEvent } from 'settings-client';

import { usePage } from '../components/context';
import { ReadOnlyRow } from '../components/ReadOnlyRow';
import { RowStatus } from '../components/RowStatus';
import { Tool } from '../components/Tool';
import { isReadOnly } from '../settings/catalogue';
import { changedBy } from '../settings/changedBy';
import { nameOfSetting, wordsFor } from '../settings/format';
import { rows } from './rows';

interface Props {
    readonly change: ChangeEvent;
    /** Whether the row shows the result of undoing it. */
    readonly showsStatus: boolean;
    readonly onUndo: () => void;
}

/** A change: of what, from what to what, by whom and when. It can be undone while the setting has another value. */
export function ChangeRow({ change, showsStatus, onUndo }: Props): JSX.Element {
    const { state, language } = usePage();
    const { t } = language;
    const { key, from, to, sequence } = change;
    const isSetHere = !isReadOnly(key) && rows[key].isShownOnly !== true;
    const words = (value: string) => wordsFor(key, value, language);
    return (
        <ReadOnlyRow
            row={`change-${sequence}`}
            name={nameOfSetting(key, language)}
            value={
                <>
                    {t('change.values', { from: words(from), to: words(to) })}
                    <span class="change">{changedBy(change, language)}</span>
                </>
            }
            tools={
                isSetHere &&
                state.values?.[key] !== from && <Tool tool="undo" words={t('change.undo')} onUse={onUndo} />
            }
        >
            {showsStatus && <RowStatus setting={key} />}
        </ReadOnlyRow>
    );
}
