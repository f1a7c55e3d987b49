export interface Command {
    readonly command: string;
    readonly [argument: string]: unknown;
}

/** What became of a command. */
export type Outcome =
    | { readonly ok: true; /** False when it was so already. */ readonly changed?: false }
    | { readonly ok: false; readonly code: string; readonly message: string };

/** A switch of the simulated device: the command that moves it and where the device's state shows it. */
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
export const knownKeys: readonly string[] = [
    'captionsFontSize',
    'captionsStyles',
    'companionDevice',
    'deviceName',
    'friendlyName',
    'handsFreeAlwaysOnDiscovered',
    'handsFreeAlwaysOnEnabled',
    'handsFreeEnabled',
    'orliaLocale',
    'pttAlwaysOnDiscovered',
    'pttAlwaysOnEnabled',
    'timezone',
    'tovanEntitlementStatus',
];

/** The locales that a person typed, divided by commas or blanks. */
export function localesIn(text: string): readonly string[] {
    return text.split(/[\s,]+/).filter((locale) => locale !== '');
}
