import { isReadOnly, settingKeys } from '../settings/catalogue';

export interface Command {
    readonly command: string;
    readonly [argument: string]: unknown;
}

/** A switch of the simulated device: its command, and the member of the device state that shows it. */
export interface DeviceSwitch {
    readonly command: string;
    readonly label: string;
    readonly fact: string;
    readonly on: string;
}

export const deviceSwitches: readonly DeviceSwitch[] = [
    { command: 'handsfree', label: 'Hands-free', fact: 'currentHandsFreeStatus', on: 'on' },
    { command: 'captions', label: 'Captions', fact: 'captionsEnabled', on: 'true' },
    { command: 'doNotDisturb', label: 'Do-not-disturb', fact: 'doNotDisturbEnabled', on: 'true' },
];

/** The keys that a device reports as system settings, offered while typing; any other key may be typed too. */
const reportedKeys: readonly string[] = settingKeys.filter((key) => !isReadOnly(key)).sort();

export interface FieldEntry {
    /** The member of the command that it becomes. */
    readonly member: 'key' | 'value' | 'values';
    readonly label: string;
    readonly hint: string;
    readonly choices?: readonly string[];
}

/** A form of the page, and the command that it sends. */
export interface FormEntry {
    readonly command: string;
    /** The text of the button, and its object, for screen readers. */
    readonly submit: string;
    readonly of: string;
    readonly fields: readonly FieldEntry[];
}

export const forms: readonly FormEntry[] = [
    {
        command: 'locale',
        submit: 'Change',
        of: 'locale',
        fields: [{ member: 'value', label: 'Locale', hint: 'fr-FR' }],
    },
    {
        command: 'locales',
        submit: 'Change',
        of: 'locales',
        fields: [{ member: 'values', label: 'Locales, primary first', hint: 'fr-FR, en-US' }],
    },
    {
        command: 'timezone',
        submit: 'Change',
        of: 'time zone',
        fields: [
            { member: 'value', label: 'Time zone', hint: 'Europe/Paris', choices: Intl.supportedValuesOf('timeZone') },
        ],
    },
    {
        command: 'setting',
        submit: 'Report',
        of: 'setting',
        fields: [
            { member: 'key', label: 'System setting', hint: 'deviceName', choices: reportedKeys },
            { member: 'value', label: 'Value', hint: 'Den' },
        ],
    },
];

/** The command of a form; values may be separated by commas or blanks. */
export function commandOf({ command, fields }: FormEntry, texts: readonly string[]): Command {
    const members = fields.map(({ member }, index) => {
        const text = texts[index] ?? '';
        return [member, member === 'values' ? (text.match(/[^\s,]+/g) ?? []) : text] as const;
    });
    return { command, ...Object.fromEntries(members) };
}

/** The texts of the fields of a form. */
export function textsOf(form: HTMLFormElement): readonly string[] {
    return [...form.querySelectorAll<HTMLInputElement>('input, select')].map(({ value }) => value.trim());
}
