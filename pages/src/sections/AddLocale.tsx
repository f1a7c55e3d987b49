import type { ComponentChildren, JSX } from 'preact';
import { useMemo } from 'preact/hooks';

import { usePage } from '../components/context';
import { Picker } from '../components/Picker';
import { Row } from '../components/Row';
import { useDialog } from '../components/useDialog';
import { nameOfLocale } from '../i18n/language';
import { offeredLocales } from './locales';
import type { Locales } from './useLocales';

/** The row below the languages that adds one. */
export function AddLocale({ list, children }: { readonly list: Locales; readonly children: ComponentChildren }): JSX.Element {
    const { t, code } = usePage().language;
    const picker = useDialog();
    const options = useMemo(
        () =>
            offeredLocales
                .map((value) => ({ value, words: nameOfLocale(value, code) }))
                .sort((left, right) => left.words.localeCompare(right.words, code)),
        [code],
    );
    return (
        <Row kind="opens" row="add" icon="add" name={t('locale.add')} opensDialog onUse={picker.open}>
            {children}
            {picker.isOpen && (
                <Picker
                    title={t('locale.add')}
                    options={options.filter(({ value }) => !list.locales.includes(value))}
                    onClose={picker.close}
                    onChoose={(locale) => {
                        picker.close();
                        list.change([...list.locales, locale]);
                    }}
                />
            )}
        </Row>
    );
}
