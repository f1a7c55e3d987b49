import type { ComponentChildren, JSX } from 'preact';

import { nameOfSetting, wordsFor } from '../settings/format';
import { usePage } from './context';
import { Explanation } from './Explanation';
import { Panel } from './Panel';
import { Row } from './Row';
import type { RowProps } from './RowProps';
import { useDialog } from './useDialog';

interface Props {
    /** The name of the row in `data-row`. */
    readonly row: string;
    readonly name: string;
    readonly value: string;
    readonly explanation?: ComponentChildren;
}

/** A value that the page only shows. It takes the focus all the same, and Enter explains it. */
export function ReadOnlyRow({ row, name, value, explanation }: Props): JSX.Element {
    const { t } = usePage().language;
    const panel = useDialog();
    return (
        <Row kind="shows" row={row} name={name} value={value} explanation={explanation} opensDialog onUse={panel.open}>
            {panel.isOpen && (
                <Panel title={name} onClose={panel.close}>
                    <div class="about">
                        <p>{value}</p>
                        {explanation}
                    </div>
                    <div class="buttons" data-row="close">
                        <button type="button" class="button" onClick={panel.close}>
                            {t('close')}
                        </button>
                    </div>
                </Panel>
            )}
        </Row>
    );
}

/** A setting that this page does not change. */
export function ReadOnlySetting(props: RowProps): JSX.Element {
    const { state, language } = usePage();
    const { setting } = props;
    return (
        <ReadOnlyRow
            row={setting}
            name={nameOfSetting(setting, language)}
            value={wordsFor(setting, state.values?.[setting], language)}
            explanation={<Explanation {...props} />}
        />
    );
}
