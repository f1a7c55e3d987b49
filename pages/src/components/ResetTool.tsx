import type { JSX } from 'preact';
import { catalogue, type SettingKey } from 'settings-client';

import { Icon } from '../icons';
import { wordsFor } from '../settings/format';
import { usePage } from './context';

/** Sets the default of a setting. It is there as long as the setting has another value. */
export function ResetTool({ setting }: { readonly setting: SettingKey }): JSX.Element | null {
    const { store, state, language } = usePage();
    const initial = catalogue[setting].default;
    const value = state.values?.[setting];
    if (initial === undefined || value === undefined || value === initial) {
        return null;
    }
    return (
        <button
            type="button"
            class="tool"
            data-tool="reset"
            onClick={() => {
                void store.set(setting, initial, true);
            }}
        >
            <Icon name="undo" />
            {language.t('reset', { value: wordsFor(setting, initial, language) })}
        </button>
    );
}
