/** The locales that a person can add; others that are set already are kept. */
export const offeredLocales: readonly string[] = (
    'ar-AE ar-EG ar-SA bg-BG ca-ES cs-CZ da-DK de-AT de-CH de-DE el-GR en-AU en-CA en-GB en-IE en-IN en-NZ en-US en-ZA es-AR ' +
    'es-CL es-CO es-ES es-MX es-US et-EE fi-FI fil-PH fr-BE fr-CA fr-CH fr-FR he-IL hi-IN hr-HR hu-HU id-ID it-CH it-IT ja-JP ' +
    'ko-KR lt-LT lv-LV ms-MY nb-NO nl-BE nl-NL pl-PL pt-BR pt-PT ro-RO ru-RU sk-SK sl-SI sr-RS sv-SE th-TH tr-TR uk-UA vi-VN ' +
    'zh-CN zh-HK zh-TW'
).split(' ');

function swapped(locales: readonly string[], index: number): string[] {
    const list = [...locales];
    const [moved] = list.splice(index, 1);
    if (moved !== undefined) {
        list.splice(index + 1, 0, moved);
    }
    return list;
}

export function movedUp(locales: readonly string[], index: number): string[] {
    return index > 0 ? swapped(locales, index - 1) : [...locales];
}

export function movedDown(locales: readonly string[], index: number): string[] {
    return index < locales.length - 1 ? swapped(locales, index) : [...locales];
}

export function without(locales: readonly string[], index: number): string[] {
    return locales.filter((_locale, other) => other !== index);
}
