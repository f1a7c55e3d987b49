import type { TextKey, Translation } from './en';
import { kept } from './kept';
import { translations } from './translations';

export interface Language extends Pick<Translation, 'settings' | 'about' | 'choices'> {
    readonly code: string;
    readonly direction: 'ltr' | 'rtl';
    /** The text of `key` with its placeholders filled in. */
    readonly t: (key: TextKey, values?: Readonly<Record<string, string>>) => string;
}

function codeOf(locale: string): string {
    return locale.split(/[-_]/)[0]?.toLowerCase() ?? '';
}

export function isTranslated(locale: string): boolean {
    return Object.hasOwn(translations, codeOf(locale));
}

/** The language of the pages for a primary assistant locale such as "fr-CA"; English when there is no translation. */
export function languageFor(locale = ''): Language {
    const code = isTranslated(locale) ? codeOf(locale) : 'en';
    const { settings, about, choices, texts } = translations[code] ?? translations.en;
    return {
        code,
        direction: code === 'ar' ? 'rtl' : 'ltr',
        settings,
        about,
        choices,
        t: (key, values = {}) =>
            texts[key].replace(/\{(\w+)\}/g, (placeholder, name: string) => values[name] ?? placeholder),
    };
}

const localeNamesIn = kept((code) => new Intl.DisplayNames([code], { type: 'language' }));

/** The name of a locale in the language of the pages: "French (Canada)"; the locale itself when it has none. */
export function nameOfLocale(locale: string, code: string): string {
    try {
        return localeNamesIn(code).of(locale.replaceAll('_', '-')) ?? locale;
    } catch {
        return locale;
    }
}
