import { createContext } from 'preact';
import { useContext } from 'preact/hooks';

import { languageFor, nameOfLocale, localesOf, type Language } from '../i18n/language';
import type { MessageKey } from '../i18n/en';
import { Store, type State } from '../state/store';

export interface PageContents {
    readonly store: Store;
    readonly state: State;
    readonly language: Language;
}

/** What every part of the page works with. */
export const Page = createContext<PageContents>({
    store: new Store(() => false),
    state: new Store(() => false).state,
    language: languageFor('en'),
});

export function usePage(): PageContents {
    return useContext(Page);
}

export const fontSizes = ['FONT_SMALL', 'FONT_MEDIUM', 'FONT_LARGE', 'FONT_EXTRA_LARGE'] as const;
export const captionStyles = [
    'STYLE_WHITE_ON_BLACK',
    'STYLE_BLACK_ON_WHITE',
    'STYLE_YELLOW_ON_BLACK',
    'STYLE_YELLOW_ON_BLUE',
] as const;

const named = new Set<string>([...fontSizes, ...captionStyles]);
const settings = new Set<string>([
    'deviceName',
    'friendlyName',
    'companionDevice',
    'orliaLocale',
    'timezone',
    'captionsEnabled',
    'captionsFontSize',
    'captionsStyles',
    'handsFreeEnabled',
    'handsFreeAlwaysOnEnabled',
    'pttAlwaysOnEnabled',
    'handsFreeAlwaysOnDiscovered',
    'pttAlwaysOnDiscovered',
    'doNotDisturbEnabled',
    'tovanEntitlementStatus',
]);
/** What a name that is empty is read as. */
const defaults = new Map([
    ['deviceName', 'TV'],
    ['friendlyName', 'TV'],
    ['companionDevice', '["",""]'],
]);
const longestShown = 80;

export function isSetting(key: string): boolean {
    return settings.has(key);
}

/** What stands in for a value that is empty. */
export function defaultOf(key: string): string {
    return defaults.get(key) ?? '';
}

/** The name of a setting; the key itself for one that these pages do not know. */
export function nameOfSetting(key: string, { t }: Language): string {
    return settings.has(key) ? t(key as MessageKey) : shortened(key);
}

/** Controls, and marks that would turn the direction of what stands around a value. */
const disturbing = /[\p{Cc}\u202a-\u202e\u2066-\u2069]/gu;

/** At most a line of it, and nothing in it that disturbs its surroundings; blanks alone stand between marks. */
export function shortened(text: string): string {
    // By code points: half a character would be shown as a broken one.
    const characters = Array.from(text);
    const line = characters.length > longestShown ? `${characters.slice(0, longestShown).join('')}…` : text;
    return isBlank(text) && text !== '' ? `“${line}”` : line.replace(disturbing, '\ufffd');
}

export function isBlank(text: string): boolean {
    return text.trim() === '';
}

/** A value in words; one that the page does not understand as it is. */
export function wordsFor(key: string, value: string | undefined, { t, code }: Language): string {
    if (value === undefined) {
        return t('unknown');
    }
    if (named.has(value)) {
        return t(value as MessageKey);
    }
    if (key.endsWith('Enabled') || key.endsWith('Discovered')) {
        const isOther = key.endsWith('Discovered') && !['true', 'false', ''].includes(value);
        return isOther ? shortened(value) : t(value === 'true' ? 'on' : 'off');
    }
    if (key === 'orliaLocale') {
        const locales = localesOf(value).map((locale) => nameOfLocale(locale, code));
        return locales.length > 0 ? shortened(locales.join(', ')) : shortened(value);
    }
    if (key === 'companionDevice') {
        const parts = pairOf(value) ?? [value];
        return shortened(parts.filter((part) => !isBlank(part)).join(' · ')) || t('notSet');
    }
    return shortened(value === '' ? defaultOf(key) : value) || t('notSet');
}

/** The two texts of a pair; null when the value has another form, of which nothing may be lost. */
export function pairOf(value: string): [string, string] | null {
    try {
        const list: unknown = JSON.parse(value === '' ? '[]' : value);
        if (Array.isArray(list) && list.length <= 2 && list.every((part) => typeof part === 'string')) {
            return [list[0] ?? '', list[1] ?? ''];
        }
    } catch {
        // Shown as it is.
    }
    return null;
}
