import type { JSX } from 'preact';
import type { ChangeEvent } from 'settings-client';

import { usePage } from '../components/context';
import { Dialog } from '../components/Dialog';
import { isReadOnly } from '../settings/catalogue';
import { changedBy } from '../settings/changedBy';
import { nameOfSetting } from '../settings/format';
import { valuesOf } from './ChangeRow';
import { rows } from './rows';

interface Props {
    readonly change: ChangeEvent;
    readonly onClose: () => void;
    readonly onUndo: () => void;
}

/** Shows a change, and undoes it. The focus is on the button that does nothing. */
export function UndoDialog({ change, onClose, onUndo }: Props): JSX.Element {
    const { state, language } = usePage();
    const { t } = language;
    const { key, from } = change;
    const name = nameOfSetting(key, language);
    const isFixed = isReadOnly(key) || rows[key].isShownOnly === true;
    const isUndone = state.values?.[key] === from;
    return (
        <Dialog title={name} onClose={onClose}>
            <p>{valuesOf(change, language)}</p>
            <p>{changedBy(change, language)}</p>
            {isFixed ? <p>{t('undo.none')}</p> : isUndone && <p>{t('undo.done')}</p>}
            <div class="buttons" data-row="undo">
                <button type="button" class="button" onClick={onClose}>
                    {t('close')}
                </button>
                {!isFixed && !isUndone && (
                    <button
                        type="button"
                        class="button primary"
                        data-tool="undo"
                        onClick={() => {
                            onClose();
                            onUndo();
                        }}
                    >
                        {t('undo')}
                    </button>
                )}
            </div>
        </Dialog>
    );
}
