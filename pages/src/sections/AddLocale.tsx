import type { ComponentChildren, JSX } from 'preact';

import { usePage } from '../components/context';
import { Row } from '../components/Row';
import { useDialog } from '../components/useDialog';
import { AddLocalePanel } from './AddLocalePanel';
import type { Locales } from './useLocales';

interface Props {
    readonly list: Locales;
    readonly tools: ComponentChildren;
    readonly explanation: ComponentChildren;
}

/** The row below the languages that adds one. */
export function AddLocale({ list, tools, explanation }: Props): JSX.Element {
    const { t } = usePage().language;
    const panel = useDialog();
    return (
        <Row
            kind="opens"
            row="add"
            icon="add"
            name={t('locale.add')}
            opensDialog
            tools={tools}
            explanation={explanation}
            onUse={panel.open}
        >
            {panel.isOpen && (
                <AddLocalePanel
                    set={list.locales}
                    onClose={panel.close}
                    onChoose={(locale) => {
                        panel.close();
                        list.change([...list.locales, locale]);
                    }}
                />
            )}
        </Row>
    );
}
