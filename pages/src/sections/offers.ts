import { nameOfLocale } from '../i18n/language';
import type { Entry } from '../settings/search';

/** The locales that a person can add; others that are set already are kept. */
const offeredLocales: readonly string[] = (
    'ar-AE ar-EG ar-SA bg-BG ca-ES cs-CZ da-DK de-AT de-CH de-DE el-GR en-AU en-CA en-GB en-IE en-IN en-NZ en-US en-ZA es-AR ' +
    'es-CL es-CO es-ES es-MX es-US et-EE fi-FI fil-PH fr-BE fr-CA fr-CH fr-FR he-IL hi-IN hr-HR hu-HU id-ID it-CH it-IT ja-JP ' +
    'ko-KR lt-LT lv-LV ms-MY nb-NO nl-BE nl-NL pl-PL pt-BR pt-PT ro-RO ru-RU sk-SK sl-SI sr-RS sv-SE th-TH tr-TR uk-UA vi-VN ' +
    'zh-CN zh-HK zh-TW'
).split(' ');

/** Something that can be added: a locale, or the locales of a language. */
export interface Offer extends Entry {
    /** The locale or the language. */
    readonly row: string;
    readonly opens: boolean;
}

/** How many offers are beside each other, where there is room; as in the styles. */
export const columns = 6;

export function languageOf(locale: string): string {
    return locale.split('-')[0] ?? '';
}

/** By their names in a language. */
function sorted(offers: readonly Offer[], code: string): readonly Offer[] {
    return [...offers].sort((one, other) => one.name.localeCompare(other.name, code));
}

function isOnlyOne(locale: string): boolean {
    return offeredLocales.filter((other) => languageOf(other) === languageOf(locale)).length === 1;
}

/** Every locale but those that are set. */
export function localeOffers(set: readonly string[], code: string): readonly Offer[] {
    const offers = offeredLocales
        .filter((locale) => !set.includes(locale))
        .map((locale) => ({
            row: locale,
            name: nameOfLocale(isOnlyOne(locale) ? languageOf(locale) : locale, code),
            words: [locale, nameOfLocale(locale, code)],
            opens: false,
        }));
    return sorted(offers, code);
}

/** The same, but for several locales of a language the language. */
export function languageOffers(locales: readonly Offer[], code: string): readonly Offer[] {
    const offers = new Map<string, Offer>();
    for (const offer of locales) {
        const language = languageOf(offer.row);
        const several = { row: language, name: nameOfLocale(language, code), words: [], opens: true };
        offers.set(language, offers.has(language) ? several : offer);
    }
    return sorted([...offers.values()], code);
}

/** The one in the middle of what is drawn in columns: nothing is far from there. */
export function middleOf<Any>(offers: readonly Any[]): Any | undefined {
    const middle = (count: number) => Math.floor((count - 1) / 2);
    const row = middle(Math.ceil(offers.length / columns));
    const inRow = offers.slice(row * columns, (row + 1) * columns);
    return inRow[middle(inRow.length)];
}
