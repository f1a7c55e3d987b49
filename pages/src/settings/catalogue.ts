import { catalogue, type ChoiceValue, type SettingKey } from 'settings-client';

export const settingKeys = Object.keys(catalogue) as readonly SettingKey[];

/** The value that an empty text means. */
export function defaultOf(key: SettingKey): string {
    return catalogue[key].default ?? '';
}

export function choicesOf(key: SettingKey): readonly ChoiceValue[] {
    return catalogue[key].values ?? [];
}

/** Whether the device alone changes it. */
export function isReadOnly(key: SettingKey): boolean {
    return catalogue[key].setBy === 'device';
}

/** Whether it says that a person has seen the introduction to a mode. */
export function isIntroduction(key: SettingKey): boolean {
    return key === 'handsFreeAlwaysOnDiscovered' || key === 'pttAlwaysOnDiscovered';
}
