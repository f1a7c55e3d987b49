import { catalogue as generated } from './catalogue.generated';

export type SettingKey = keyof typeof generated;
type Entry = (typeof generated)[SettingKey];
export type Kind = Entry['kind'];
/** A value of a choice. */
export type ChoiceValue = Extract<Entry, { readonly kind: 'choice' }>['values'][number];

export interface Setting {
    readonly kind: Kind;
    /** The values of a choice. */
    readonly values?: readonly ChoiceValue[];
    readonly default?: string;
    readonly owner: 'storage' | 'voice SDK' | 'device';
    readonly setBy: 'anyone' | 'device';
}

/** What the pages need of SettingsHandler/catalogue.json. */
export const catalogue: Readonly<Record<SettingKey, Setting>> = generated;

export const settingKeys = Object.keys(catalogue) as readonly SettingKey[];

export function isSetting(key: string): key is SettingKey {
    return Object.hasOwn(catalogue, key);
}

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
