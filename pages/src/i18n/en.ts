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
    deviceName: 'The name of this TV in the lists of other devices.',
    companionDevice: 'The phone or tablet paired with this TV.',
    orliaLocale: 'The assistant prefers the first one.',
    captionsEnabled: 'What is said, as text on the screen.',
    captionsFontSize: 'The size of captions.',
    captionsStyles: 'The colours of captions.',
    doNotDisturbEnabled: 'The assistant speaks only when you speak to it.',
    handsFreeEnabled: 'Talk to the assistant without the remote control.',
    handsFreeAlwaysOnEnabled: 'The wake word works even when the screen is off.',
    handsFreeAlwaysOnDiscovered: 'The TV shows it once.',
    pttAlwaysOnEnabled: 'The microphone button works even when the screen is off.',
    pttAlwaysOnDiscovered: 'The TV shows it once.',
    friendlyName: 'What you call this TV when you talk to the assistant.',
    tovanEntitlementStatus: 'What your account may use, as the assistant’s service reports it.',
    timezone: 'For clocks and appointments.',
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
    'page.title': 'Settings',
    'page.sections': 'Sections',
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
    'handsFree.off': 'Hands-free is off: use the microphone button.',
    'introduction.again': 'Show the introduction again',
    'introduction.seen': 'Seen',
    'introduction.unseen': 'Not seen yet',
    'selected.name': 'Selected assistant',
    'selected.yes': 'This is the selected assistant',
    'selected.no': 'Another assistant is selected',
    'action.openSettings': 'Open the assistant’s settings',
    'openSettings.done': 'Opened on the TV.',
    'action.logOut': 'Log out',
    'logOut.question': 'Log out of this TV?',
    'logOut.erases':
        'Erased for good: both names of this TV, the paired device, the look of captions, the entitlement, seen introductions, recent changes and backups.',
    'logOut.turnsOff': 'Turned off: hands-free and both always-on modes.',
    'logOut.keeps': 'Kept: languages, time zone, captions and do not disturb.',
    'logOut.done': 'You are logged out.',
    'action.failed': 'Failed: the TV is not responding.',
    'action.refused': 'Failed: the TV could not do this.',

    'value.on': 'On',
    'value.off': 'Off',
    'value.unknown': 'Unknown',
    'value.notSet': 'Not set',
    'onTv.only': 'The TV itself changes this.',
    'value.other': 'Other: {value}',
    'preview.title': 'Preview',
    'preview.text': 'Captions will look like this.',

    'edit.title': 'Change {name}',
    'edit.save': 'Save',
    'edit.cancel': 'Cancel',
    'edit.close': 'Close',
    'locale.primary': 'Primary',
    'locale.add': 'Add a language',
    'locale.up': 'Move up',
    'locale.down': 'Move down',
    'locale.remove': 'Remove',
    'locale.last': 'At least one language is required.',
    'locale.makePrimary': 'Make primary',
    'locale.move': 'Move',
    'locale.carry': '{name}: {position} of {count}. Up and down move it, OK drops it, Back puts it back.',
    'locale.undo': 'You can undo this for ten seconds.',
    'locale.question': 'Show these pages in {language}?',
    'locale.change': 'Change',
    'timezone.search': 'City or country',
    'onTv.captionsEnabled':
        'Press the captions button on the TV’s remote (often CC, SUB or Subtitle), or look for captions in the TV’s own menu.',
    'onTv.doNotDisturbEnabled':
        'Open the TV’s own menu with the Menu or Settings button of its remote, and look for Do not disturb.',
    'locale.untranslated': 'These pages are in English: there is no translation into {name}.',
    'search.found': '{count} found',
    'search.nothing': 'No results',

    'edit.reset': 'Reset to {value}',

    'changes.none': 'No recent changes',
    'change.values': 'From “{from}” to “{to}”',
    'change.undo': 'Undo',

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
    'health.defaults': 'Reset to the defaults',
    'health.not-serving': 'Not ready',

    saving: 'Saving…',
    accepted: 'Saved',
    unchanged: 'No change',
    default: 'Reset to the default: {value}',
    draft: 'Not saved: {value}',
    'refused.incomplete': 'Not changed: reload this page and try again.',
    'refused.stale': 'Not changed: it was changed elsewhere in the meantime.',
    'refused.read-only': 'Not changed: this can only be set on the device.',
    'refused.wrong-form': 'Not changed: the TV does not accept this value.',
    'refused.not-stored': 'Not changed: the TV could not save it.',
    'refused.unknown': 'Not changed: the reason is unknown.',
    'refused.too-long': 'Not changed: the value is too long.',
    'refused.not-applied': 'The TV did not apply this change.',
    'refused.no-reply': 'The TV is not responding. Try again.',
    'edit.tryAgain': 'Try again',
    'conflict.value': 'Changed to “{value}” in the meantime.',
    'conflict.keep': 'Keep my text',
    'conflict.use': 'Use the new value',

    'page.loading': 'Loading settings…',
    'connection.lost': 'The TV is not responding. Trying again…',
    'connection.retry': 'Try again now',
    'connection.unauthorized': 'This page may no longer connect. “settingsctl page” prints its new address.',
    'connection.unsupported': 'The TV’s software is too old for this page.',
    'by.page': 'another page',
    'by.socket': 'a program',
    'by.device': 'the TV',
    'by.unknown': 'somebody',
    'change.by': 'Changed by {who}, {when}',
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
