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
const longestShown = 80;

/** The name of a setting; the key itself for one that these pages do not know. */
export function nameOfSetting(key: string, { t }: Language): string {
    return settings.has(key) ? t(key as MessageKey) : shortened(key);
}

/** Controls, and marks that would turn the direction of what stands around a value. */
const disturbing = /[\p{Cc}\u202a-\u202e\u2066-\u2069]/gu;

/** At most a line of it, and nothing in it that disturbs its surroundings. */
export function shortened(text: string): string {
    // By code points: half a character would be shown as a broken one.
    const characters = Array.from(text);
    const line = characters.length > longestShown ? `${characters.slice(0, longestShown).join('')}…` : text;
    return line.replace(disturbing, '\ufffd');
}

/** A value in words. */
export function wordsFor(key: string, value: string | undefined, { t, code }: Language): string {
    if (value === undefined) {
        return t('unknown');
    }
    if (named.has(value)) {
        return t(value as MessageKey);
    }
    if (key.endsWith('Enabled') || key.endsWith('Discovered')) {
        return value === 'true' ? t('on') : t('off');
    }
    if (key === 'orliaLocale') {
        const locales = localesOf(value).map((locale) => nameOfLocale(locale, code));
        return locales.length > 0 ? shortened(locales.join(', ')) : shortened(value);
    }
    if (key === 'companionDevice') {
        return (
            shortened(
                pairOf(value)
                    .filter((part) => part !== '')
                    .join(' · '),
            ) || t('notSet')
        );
    }
    return value === '' ? t('notSet') : shortened(value);
}

/** The two texts of a pair; a value that is no pair is the first of them, so that it can be seen. */
export function pairOf(value: string): [string, string] {
    try {
        const list: unknown = JSON.parse(value);
        if (Array.isArray(list) && list.every((part) => typeof part === 'string')) {
            return [list[0] ?? '', list[1] ?? ''];
        }
    } catch {
        // Shown as it is.
    }
    return [value, ''];
}
