import type { JSX, RefObject } from 'preact';
import type { SettingKey } from 'settings-client';

import { wordsFor } from '../settings/format';
import { usePage } from './context';

interface Props {
    readonly setting: SettingKey;
    readonly keep: RefObject<HTMLButtonElement>;
    readonly onKeep: () => void;
    readonly onUse: () => void;
}

/** Shows the value that was set during the edit, and lets the person decide. */
export function Conflict({ setting, keep, onKeep, onUse }: Props): JSX.Element {
    const { state, language } = usePage();
    return (
        <div class="conflict" data-row={`${setting}-conflict`}>
            <p>{language.t('conflict.value', { value: wordsFor(setting, state.values?.[setting] ?? '', language) })}</p>
            <button type="button" class="button" ref={keep} onClick={onKeep}>
                {language.t('conflict.keep')}
            </button>
            <button type="button" class="button" onClick={onUse}>
                {language.t('conflict.use')}
            </button>
        </div>
    );
}
