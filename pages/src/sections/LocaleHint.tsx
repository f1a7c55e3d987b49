import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { isTranslated, nameOfLocale } from '../i18n/language';
import { shortened } from '../settings/format';
import type { Locales } from './useLocales';

/** Says what the keys do now. */
export function LocaleHint({ list }: { readonly list: Locales }): JSX.Element {
    const { t, code } = usePage().language;
    const primary = list.locales[0];
    const nameOf = (locale = '') => shortened(nameOfLocale(locale, code));
    const words = () => {
        if (list.pickedUp !== null) {
            const { locales, index } = list.pickedUp;
            const values = { name: nameOf(locales[index]), position: `${index + 1}`, count: `${locales.length}` };
            return t('locale.carry', values);
        }
        if (list.canUndo) {
            return t('locale.undo');
        }
        return primary === undefined || isTranslated(primary)
            ? ''
            : t('locale.untranslated', { name: nameOf(primary) });
    };
    return (
        <p class="about" role="status">
            {words()}
        </p>
    );
}
