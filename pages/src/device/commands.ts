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
export const reportedKeys: readonly string[] = settingKeys.filter((key) => !isReadOnly(key)).sort();

/** The locales in `text`, separated by commas or blanks. */
export function localesIn(text: string): readonly string[] {
    return text.split(/[\s,]+/).filter((locale) => locale !== '');
}

export interface FieldEntry {
    readonly label: string;
    readonly hint: string;
    readonly choices?: readonly string[];
}

/** The texts of the fields of a form. */
export function textsOf(form: HTMLFormElement): readonly string[] {
    return [...form.querySelectorAll<HTMLInputElement>('input, select')].map(({ value }) => value.trim());
}

/** A form of the page, and the command that it sends. */
export interface FormEntry {
    /** The text of the button, and its object, for screen readers. */
    readonly submit: string;
    readonly of: string;
    readonly fields: readonly FieldEntry[];
    readonly commandOf: (values: readonly string[]) => Command;
}

export const forms: readonly FormEntry[] = [
    {
        submit: 'Change',
        of: 'locale',
        fields: [{ label: 'Locale', hint: 'fr-FR' }],
        commandOf: ([value = '']) => ({ command: 'locale', value: value.trim() }),
    },
    {
        submit: 'Change',
        of: 'locales',
        fields: [{ label: 'Locales, primary first', hint: 'fr-FR, en-US' }],
        commandOf: ([text = '']) => ({ command: 'locales', values: localesIn(text) }),
    },
    {
        submit: 'Change',
        of: 'time zone',
        fields: [{ label: 'Time zone', hint: 'Europe/Paris', choices: Intl.supportedValuesOf('timeZone') }],
        commandOf: ([value = '']) => ({ command: 'timezone', value: value.trim() }),
    },
    {
        submit: 'Report',
        of: 'setting',
        fields: [
            { label: 'System setting', hint: 'deviceName', choices: reportedKeys },
            { label: 'Value', hint: 'Den' },
        ],
        commandOf: ([key = '', value = '']) => ({ command: 'setting', key, value }),
    },
];
