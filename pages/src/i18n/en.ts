import type { ChoiceValue, SettingKey } from 'settings-client';

const settings: Readonly<Record<SettingKey, string>> = {
    deviceName: 'Device name',
    companionDevice: 'Companion device',
    orliaLocale: 'Assistant languages',
    captionsEnabled: 'Captions',
    captionsFontSize: 'Text size',
    captionsStyles: 'Colours',
    doNotDisturbEnabled: 'Do not disturb',
    handsFreeEnabled: 'Hands-free',
    handsFreeAlwaysOnEnabled: 'Always on by voice',
    handsFreeAlwaysOnDiscovered: 'Introduction to “Always on by voice” seen',
    pttAlwaysOnEnabled: 'Always on by push-to-talk',
    pttAlwaysOnDiscovered: 'Introduction to “Always on by push-to-talk” seen',
    friendlyName: 'Friendly name',
    tovanEntitlementStatus: 'Entitlement',
    timezone: 'Time zone',
};

const choices: Readonly<Record<ChoiceValue, string>> = {
    FONT_SMALL: 'Small',
    FONT_MEDIUM: 'Medium',
    FONT_LARGE: 'Large',
    FONT_EXTRA_LARGE: 'Extra large',
    STYLE_WHITE_ON_BLACK: 'White on black',
    STYLE_BLACK_ON_WHITE: 'Black on white',
    STYLE_YELLOW_ON_BLACK: 'Yellow on black',
    STYLE_YELLOW_ON_BLUE: 'Yellow on blue',
};

/** Every other text of the pages. `{name}` is a placeholder. */
const texts = {
    title: 'Settings',
    sections: 'Sections',
    'section.device': 'Device',
    'section.language': 'Language and region',
    'section.captions': 'Captions',
    'section.voice': 'Voice',
    'section.doNotDisturb': 'Do not disturb',
    'section.account': 'Account',

    'friendlyName.about': 'What you call this TV when you talk to the assistant.',
    'companionDevice.about': 'The phone or tablet paired with this TV.',
    'companionDevice.first': 'Name',
    'companionDevice.second': 'Kind',
    'orliaLocale.about': 'The assistant prefers the first language and falls back to the others.',
    'handsFreeEnabled.about': 'Talk to the assistant without the remote control.',
    'handsFreeAlwaysOnEnabled.about': 'The wake word works even when the screen is off.',
    'pttAlwaysOnEnabled.about': 'The microphone button works even when the screen is off.',
    'discovered.about': 'Turn this off to see the introduction again.',
    'doNotDisturbEnabled.about': 'While this is on, the assistant stays silent unless you speak to it.',
    selected: 'Selected assistant',
    'selected.yes': 'This is the selected assistant',
    'selected.no': 'Another assistant is selected',
    openSettings: 'Open the assistant’s settings',
    'openSettings.done': 'Opened on the TV.',
    logOut: 'Log out',
    'logOut.question': 'Log out of this TV?',
    'logOut.about': 'This erases the stored settings and turns off the always-on modes.',
    'logOut.done': 'You are logged out.',
    'action.failed': 'Failed: the TV is not responding.',
    'action.refused': 'Failed: the TV could not do this.',

    on: 'On',
    off: 'Off',
    unknown: 'Unknown',
    notSet: 'Not set',
    setOnDevice: 'Set on the device.',
    otherValue: 'Other: {value}',
    preview: 'Preview',
    'preview.text': 'Captions will look like this.',

    edit: 'Change {name}',
    save: 'Save',
    cancel: 'Cancel',
    close: 'Close',
    'locale.primary': 'Primary',
    'locale.add': 'Add a language',
    'locale.up': 'Move {name} up',
    'locale.down': 'Move {name} down',
    'locale.remove': 'Remove {name}',
    'locale.last': 'At least one language is required.',
    search: 'Search',
    found: '{count} found',
    nothingFound: 'No results',

    saving: 'Saving…',
    accepted: 'Saved',
    unchanged: 'No change',
    default: 'Reset to the default: {value}',
    draft: 'Not saved: {value}',
    'refused.incomplete': 'Not changed: the request was incomplete.',
    'refused.stale': 'Not changed: it was changed elsewhere in the meantime.',
    'refused.read-only': 'Not changed: this can only be set on the device.',
    'refused.wrong-form': 'Not changed: the value has the wrong format.',
    'refused.not-stored': 'Not changed: the TV could not save it.',
    'refused.unknown': 'Not changed: the TV gave a reason that this page does not know.',
    'refused.too-long': 'Not changed: the value is too long.',
    'refused.not-applied': 'The TV did not apply this change.',
    'refused.no-reply': 'The TV is not responding. Try again.',
    tryAgain: 'Try again',
    conflict: 'Changed to “{value}” in the meantime.',
    'conflict.keep': 'Keep my text',
    'conflict.use': 'Use the new value',

    loading: 'Loading settings…',
    'connection.lost': 'The TV is not responding. Trying again…',
    'connection.retry': 'Try again now',
    'connection.unauthorized': 'This page can no longer connect. Open the new address that “settingsctl page” prints.',
    'connection.unsupported': 'This page needs a newer version of the TV’s software.',
    'by.page': 'another page',
    'by.socket': 'a program',
    'by.device': 'the TV',
    'by.unknown': 'somebody',
    lastChange: 'Last changed by {who}, {when}',
    turnedOn: '{name} turned on by {who}',
    turnedOff: '{name} turned off by {who}',
    setTo: '{name} set to {value} by {who}',
} as const;

export type TextKey = keyof typeof texts;

/** What the pages say in one language. */
export interface Translation {
    readonly settings: Readonly<Record<SettingKey, string>>;
    readonly choices: Readonly<Record<ChoiceValue, string>>;
    readonly texts: Readonly<Record<TextKey, string>>;
}

export const en: Translation = { settings, choices, texts };
