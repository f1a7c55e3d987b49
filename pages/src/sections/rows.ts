import type { SettingKey } from 'settings-client';

import type { TextKey } from '../i18n/en';

interface Row {
    readonly section: SectionId;
    /** The names of the parts of a pair. */
    readonly parts?: readonly [TextKey, TextKey];
    /** Shown only, though a client may set it. */
    readonly isShownOnly?: true;
    /** Whether hands-free changes what it means. */
    readonly needsHandsFree?: true;
}

export type SectionId = 'device' | 'language' | 'captions' | 'voice' | 'account' | 'search' | 'changes' | 'about';

/** Where each setting is shown; the rows of a section have this order. The kind of the setting decides what its row looks like. */
export const rows: Readonly<Record<SettingKey, Row>> = {
    deviceName: { section: 'device' },
    friendlyName: { section: 'device' },
    companionDevice: {
        section: 'device',
        parts: ['companionDevice.first', 'companionDevice.second'],
    },
    orliaLocale: { section: 'language' },
    timezone: { section: 'language' },
    captionsEnabled: { section: 'captions' },
    captionsFontSize: { section: 'captions' },
    captionsStyles: { section: 'captions' },
    handsFreeEnabled: { section: 'voice' },
    doNotDisturbEnabled: { section: 'voice' },
    handsFreeAlwaysOnEnabled: { section: 'voice', needsHandsFree: true },
    handsFreeAlwaysOnDiscovered: { section: 'voice' },
    pttAlwaysOnEnabled: { section: 'voice', needsHandsFree: true },
    pttAlwaysOnDiscovered: { section: 'voice' },
    tovanEntitlementStatus: { section: 'account', isShownOnly: true },
};

/** The settings of a section, in the order of their rows. */
export function settingsOf(section: SectionId): readonly SettingKey[] {
    return (Object.keys(rows) as SettingKey[]).filter((key) => rows[key].section === section);
}
