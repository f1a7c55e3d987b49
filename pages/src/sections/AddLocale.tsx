import type { ComponentChildren, JSX } from 'preact';
import { useMemo } from 'preact/hooks';

import { usePage } from '../components/context';
import { Picker } from '../components/Picker';
import { Row } from '../components/Row';
import { useDialog } from '../components/useDialog';
import { nameOfLocale } from '../i18n/language';
import { offeredLocales } from './locales';
import type { Locales } from './useLocales';

interface Props {
    readonly list: Locales;
    readonly tools: ComponentChildren;
    readonly explanation: ComponentChildren;
}

/** The row below the languages that adds one. */
export function AddLocale({ list, tools, explanation }: Props): JSX.Element {
    const { t, code } = usePage().language;
    const picker = useDialog();
    const options = useMemo(
        () =>
            offeredLocales
                .map((value) => ({ value, name: nameOfLocale(value, code), words: [value] }))
                .sort((left, right) => left.name.localeCompare(right.name, code)),
        [code],
    );
    return (
        <Row
            kind="opens"
            row="add"
            icon="add"
            name={t('locale.add')}
            opensDialog
            tools={tools}
            explanation={explanation}
            onUse={picker.open}
        >
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
