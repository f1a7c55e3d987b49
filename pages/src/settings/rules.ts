import type { SettingRules } from '../wire/session';
import { catalogue, isReadOnly, isSetting } from './catalogue';
import { localesOf } from './values';

const noRules: SettingRules = { isReadOnly: false, mayRevertAfterEvent: false, isWellFormed: () => true };

/** How the host treats new values of a setting; a key that the catalogue does not have takes any text. */
export function rulesOf(key: string): SettingRules {
    if (!isSetting(key)) {
        return noRules;
    }
    const { kind, owner } = catalogue[key];
    return {
        isReadOnly: isReadOnly(key),
        mayRevertAfterEvent: owner === 'device',
        isWellFormed: (value) => kind !== 'locales' || localesOf(value).length > 0,
    };
}
