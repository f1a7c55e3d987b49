import type { SettingKey } from 'settings-client';

/** What the row of a setting is drawn from. */
export interface RowProps {
    readonly setting: SettingKey;
    /** A sentence below the name. */
    readonly about?: string | undefined;
    /** The names of the two parts of a value that is a pair. */
    readonly parts?: readonly string[] | undefined;
}
