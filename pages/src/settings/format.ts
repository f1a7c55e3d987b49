import { catalogue, isSetting, type Kind, type SettingKey } from 'settings-client';

import { nameOfLocale, type Language } from '../i18n/language';
import { nameOfZone } from '../timezones/names';
import { choicesOf, defaultOf, isIntroduction } from './catalogue';
import { localesOf, pairOf } from './values';

const maxLength = 80;
/** Control characters, and marks that change the direction of the text around a value. */
const disruptive = /[\p{Cc}\u202a-\u202e\u2066-\u2069]/gu;

export function isBlank(text: string): boolean {
    return text.trim() === '';
}

/** At most a line of `text`, without disruptive characters; a blank text is put in quotation marks. */
export function shortened(text: string): string {
    // By code points: half of a surrogate pair would be shown as a broken character.
    const characters = Array.from(text);
    const line = characters.length > maxLength ? `${characters.slice(0, maxLength).join('')}…` : text;
    return isBlank(text) && text !== '' ? `“${line}”` : line.replace(disruptive, '\ufffd');
}

/** The name of a setting; the key itself when the catalogue does not have it. */
export function nameOfSetting(key: string, { settings }: Language): string {
    return isSetting(key) ? settings[key] : shortened(key);
}

type Format = (value: string, language: Language, key: SettingKey) => string;

const formatText: Format = (value, { t }) => shortened(value) || t('value.notSet');

const formats: Readonly<Record<Kind, Format>> = {
    text: formatText,
    timezone: (value, language, key) => nameOfZone(value, language.code) ?? formatText(value, language, key),
    choice: (value, language, key) => {
        const known = choicesOf(key).find((choice) => choice === value);
        return known === undefined ? formatText(value, language, key) : language.choices[known];
    },
    switch: (value, { t }, key) => {
        // Anything can be stored; what the device or the voice SDK reports is on or off.
        const isOther = catalogue[key].owner === 'storage' && !['true', 'false', ''].includes(value);
        const isOn = value === 'true';
        const words = isIntroduction(key)
            ? t(isOn ? 'introduction.seen' : 'introduction.unseen')
            : t(isOn ? 'value.on' : 'value.off');
        return isOther ? shortened(value) : words;
    },
    locales: (value, { code }) => {
        const names = localesOf(value).map((locale) => nameOfLocale(locale, code));
        return shortened(names.length > 0 ? names.join(', ') : value);
    },
    list: (value, { t }) => {
        const parts = pairOf(value) ?? [value];
        return shortened(parts.filter((part) => !isBlank(part)).join(' · ')) || t('value.notSet');
    },
};

/** A value in words, or as it is when it has an unexpected form. */
export function wordsFor(key: SettingKey, value: string | undefined, language: Language): string {
    if (value === undefined) {
        return language.t('value.unknown');
    }
    return formats[catalogue[key].kind](value === '' ? defaultOf(key) : value, language, key);
}
