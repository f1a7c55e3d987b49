import { ar } from './ar';
import { de } from './de';
import { en, type Catalogue, type MessageKey } from './en';
import { es } from './es';
import { fr } from './fr';
import { ja } from './ja';

export const catalogues: Readonly<Record<string, Catalogue>> = { en, fr, es, de, ja, ar };

export type Translate = (key: MessageKey, filled?: Readonly<Record<string, string>>) => string;

export interface Language {
    readonly code: string;
    readonly direction: 'ltr' | 'rtl';
    readonly t: Translate;
}

/** The locales in the text of a locale setting, the primary one first; none when the text is no list. */
export function localesOf(value: string | undefined): string[] {
    try {
        const list: unknown = JSON.parse(value ?? '');
        return Array.isArray(list)
            ? list.filter((locale): locale is string => typeof locale === 'string' && locale !== '')
            : [];
    } catch {
        return [];
    }
}

/** The language of the pages for a primary assistant locale such as "fr-CA"; English when there is none for it. */
export function languageFor(locale: string | undefined): Language {
    const asked = (locale ?? '').split(/[-_]/)[0]?.toLowerCase() ?? '';
    const code = Object.hasOwn(catalogues, asked) ? asked : 'en';
    const catalogue = catalogues[code] ?? en;
    return {
        code,
        direction: code === 'ar' ? 'rtl' : 'ltr',
        t: (key, filled = {}) => catalogue[key].replace(/\{(\w+)\}/g, (place, name: string) => filled[name] ?? place),
    };
}

/** Making one takes longer than asking it, and lists ask for many names. */
const localeNames = new Map<string, Intl.DisplayNames>();

function localeNamesIn(code: string): Intl.DisplayNames {
    const names = localeNames.get(code) ?? new Intl.DisplayNames([code], { type: 'language' });
    localeNames.set(code, names);
    return names;
}

/** The name of a locale in the language of the pages: "French (Canada)"; the code itself when there is none. */
export function nameOfLocale(locale: string, code: string): string {
    try {
        return localeNamesIn(code).of(locale.replaceAll('_', '-')) ?? locale;
    } catch {
        return locale;
    }
}
