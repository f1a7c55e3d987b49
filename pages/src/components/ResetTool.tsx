import type { JSX } from 'preact';
import { catalogue, type SettingKey } from 'settings-client';

import { wordsFor } from '../settings/format';
import { usePage } from './context';
import { Tool } from './Tool';

/** Sets the default of a setting. It is there as long as the setting has another value. */
export function ResetTool({ setting }: { readonly setting: SettingKey }): JSX.Element | null {
    const { store, state, language } = usePage();
    const initial = catalogue[setting].default;
    const value = state.values?.[setting];
    if (initial === undefined || value === undefined || value === initial) {
        return null;
    }
    return (
        <Tool
            tool="reset"
            words={language.t('edit.reset', { value: wordsFor(setting, initial, language) })}
            onUse={() => {
                void store.set(setting, initial, true);
            }}
        />
    );
}
