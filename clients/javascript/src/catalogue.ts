import { catalogue as generated } from './catalogue.generated.js';

/** The key of a setting. */
export type SettingKey = keyof typeof generated;
type Entry = (typeof generated)[SettingKey];
export type Kind = Entry['kind'];
/** A value of a choice. */
export type ChoiceValue = Extract<Entry, { readonly kind: 'choice' }>['values'][number];

/** What a setting may be set to, as far as the catalogue says it. */
export type ValueOf<Key extends SettingKey> = Key extends SettingKey
    ? (typeof generated)[Key] extends {
          readonly values: readonly (infer Value)[];
      }
        ? Value
        : (typeof generated)[Key]['kind'] extends 'switch'
          ? 'true' | 'false'
          : string
    : never;

export interface Setting {
    readonly kind: Kind;
    /** The values of a choice. */
    readonly values?: readonly ChoiceValue[];
    readonly default?: string;
    readonly owner: 'storage' | 'voice SDK' | 'device';
    /** Whether clients set it, or the device alone. */
    readonly setBy: 'anyone' | 'device';
}

/** Every setting. */
export const catalogue: Readonly<Record<SettingKey, Setting>> = generated;

export function isSetting(key: string): key is SettingKey {
    return Object.hasOwn(catalogue, key);
}
