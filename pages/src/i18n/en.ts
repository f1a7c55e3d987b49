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
    handsFreeAlwaysOnDiscovered: 'Introduction to “Always on by voice”',
    pttAlwaysOnEnabled: 'Always on by push-to-talk',
    pttAlwaysOnDiscovered: 'Introduction to “Always on by push-to-talk”',
    friendlyName: 'Friendly name',
    tovanEntitlementStatus: 'Entitlement',
    timezone: 'Time zone',
};

/** What each setting is. */
const about: Readonly<Record<SettingKey, string>> = {
    deviceName: 'The name that this TV uses for itself. Other devices show it in their lists.',
    companionDevice: 'The phone or tablet paired with this TV.',
    orliaLocale: 'The assistant prefers the first language and falls back to the others.',
    captionsEnabled: 'Shows what is said as text on the screen.',
    captionsFontSize: 'How large captions are.',
    captionsStyles: 'The colours of captions and of what is behind them.',
    doNotDisturbEnabled: 'While this is on, the assistant stays silent unless you speak to it.',
    handsFreeEnabled: 'Talk to the assistant without the remote control.',
    handsFreeAlwaysOnEnabled: 'The wake word works even when the screen is off.',
    handsFreeAlwaysOnDiscovered: 'The TV introduces this mode once. You can see the introduction again.',
    pttAlwaysOnEnabled: 'The microphone button works even when the screen is off.',
    pttAlwaysOnDiscovered: 'The TV introduces this mode once. You can see the introduction again.',
    friendlyName: 'What you call this TV when you talk to the assistant. The device name may be another one.',
    tovanEntitlementStatus:
        'What your account may use on this TV. The assistant’s service reports it; you cannot change it here.',
    timezone: 'Where this TV is, for clocks and appointments.',
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
    'section.account': 'Account',
    'section.search': 'Search',
    'section.changes': 'Recent changes',
    'section.about': 'About',

    'companionDevice.first': 'Name',
    'companionDevice.second': 'Kind',
    'handsFreeAlwaysOnEnabled.off': 'Hands-free is off, so the assistant does not listen for the wake word.',
    'pttAlwaysOnEnabled.off': 'Hands-free is off, so the microphone button is the only way to talk to the assistant.',
    'introduction.again': 'Show the introduction again',
    'introduction.seen': 'Seen',
    'introduction.unseen': 'Not seen yet',
    selected: 'Selected assistant',
    'selected.yes': 'This is the selected assistant',
    'selected.no': 'Another assistant is selected',
    openSettings: 'Open the assistant’s settings',
    'openSettings.done': 'Opened on the TV.',
    logOut: 'Log out',
    'logOut.question': 'Log out of this TV?',
    'logOut.erases':
        'Erased for good: the names of this TV, the paired device, size and colours of captions, the entitlement, which introductions you have seen, the recent changes and all backups.',
    'logOut.turnsOff': 'Turned off: hands-free and both always-on modes.',
    'logOut.keeps': 'Kept: languages, time zone, and whether captions and do not disturb are on.',
    'logOut.done': 'You are logged out.',
    'action.failed': 'Failed: the TV is not responding.',
    'action.refused': 'Failed: the TV could not do this.',

    on: 'On',
    off: 'Off',
    unknown: 'Unknown',
    notSet: 'Not set',
    setOnDevice: 'The TV itself changes this.',
    otherValue: 'Other: {value}',
    preview: 'Preview',
    'preview.text': 'Captions will look like this.',

    edit: 'Change {name}',
    save: 'Save',
    cancel: 'Cancel',
    close: 'Close',
    'locale.primary': 'Primary',
    'locale.add': 'Add a language',
    'locale.up': 'Move up',
    'locale.down': 'Move down',
    'locale.remove': 'Remove',
    'locale.last': 'At least one language is required.',
    'locale.makePrimary': 'Make primary',
    'locale.move': 'Move',
    'locale.position': '{name}: {position} of {count}.',
    'locale.carry': 'Up and down move it, OK drops it, Back puts it back.',
    'locale.undo': 'You can undo this for ten seconds.',
    'locale.question': 'Show these pages in {language}?',
    'locale.change': 'Change',
    'timezone.search': 'City or country',
    'timezone.letters': 'First letters',
    'timezone.failed': 'The cities could not be loaded.',
    'onTv.captionsEnabled':
        'Press the captions button on the TV’s remote; it is often labelled CC, SUB or Subtitle. If there is none, open the TV’s own menu with the Menu or Settings button and look for captions under Accessibility.',
    'onTv.doNotDisturbEnabled':
        'Open the TV’s own menu with the Menu or Settings button on its remote and look for Do not disturb, often under Sound or Notifications.',
    'onTv.shown': 'This page shows the change as soon as you make it.',
    'onTv.now': 'Now: {value}',
    'onTv.changed': 'Changed: {value}',
    'locale.untranslated': 'These pages are not translated into {name}, so they are in English.',
    search: 'Search',
    found: '{count} found',
    nothingFound: 'No results',

    reset: 'Reset to {value}',

    'changes.none': 'No recent changes',
    'change.values': 'From “{from}” to “{to}”',
    undo: 'Undo',
    'undo.done': 'Undone',
    'undo.none': 'You cannot undo this here.',

    'about.host': 'Settings service',
    'about.wire': 'Connection',
    'about.pages': 'These pages',
    'about.version': 'Version {version}',
    'about.address': 'Address',
    'about.health': 'Condition',
    'about.faults': 'Simulated faults',
    'health.ok': 'Everything works',
    'health.degraded': 'Changes cannot be saved',
    'health.backup': 'Restored from a backup',
    'health.defaults': 'Settings were lost; defaults are used',
    'health.not-serving': 'Not ready',

    saving: 'Saving…',
    accepted: 'Saved',
    unchanged: 'No change',
    default: 'Reset to the default: {value}',
    draft: 'Not saved: {value}',
    'refused.incomplete': 'Not changed: the TV did not understand this page. Reload it and try again.',
    'refused.stale': 'Not changed: it was changed elsewhere in the meantime.',
    'refused.read-only': 'Not changed: this can only be set on the device.',
    'refused.wrong-form': 'Not changed: the TV does not accept this value.',
    'refused.not-stored': 'Not changed: the TV could not save it.',
    'refused.unknown': 'Not changed: the TV did not say why in a way that this page understands.',
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
    'connection.unauthorized':
        'This page may no longer connect. Open the settings on the TV again, or the new address that “settingsctl page” prints.',
    'connection.unsupported': 'This page needs a newer version of the TV’s software.',
    'by.page': 'another page',
    'by.socket': 'a program',
    'by.device': 'the TV',
    'by.unknown': 'somebody',
    changedBy: 'Changed by {who}, {when}',
    turnedOn: '{name} turned on by {who}',
    turnedOff: '{name} turned off by {who}',
    setTo: '{name} set to {value} by {who}',
} as const;

export type TextKey = keyof typeof texts;

/** What the pages say in one language. */
export interface Translation {
    readonly settings: Readonly<Record<SettingKey, string>>;
    readonly about: Readonly<Record<SettingKey, string>>;
    readonly choices: Readonly<Record<ChoiceValue, string>>;
    readonly texts: Readonly<Record<TextKey, string>>;
}

export const en: Translation = { settings, about, choices, texts };
