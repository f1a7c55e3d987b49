import type { ComponentChildren, JSX } from 'preact';
import type { SettingKey } from 'settings-client';

import type { TextKey } from '../i18n/en';
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
    readonly value: ComponentChildren;
    readonly tools?: ComponentChildren;
    readonly explanation?: ComponentChildren;
    readonly children?: ComponentChildren;
}

/** A value that the page only shows. It takes the focus all the same, and Enter explains it. */
export function ReadOnlyRow({ children, ...props }: Props): JSX.Element {
    const { t } = usePage().language;
    const { name, value, explanation } = props;
    const panel = useDialog();
    return (
        <Row kind="shows" {...props} opensDialog onUse={panel.open}>
            {children}
            {panel.isOpen && (
                <Panel title={name} onClose={panel.close}>
                    <div class="about">{explanation}</div>
                    <p class="now" role="status">
                        {value}
                    </p>
                    <div class="buttons" data-row="close">
                        <button type="button" class="button" onClick={panel.close}>
                            {t('edit.close')}
                        </button>
                    </div>
                </Panel>
            )}
        </Row>
    );
}

/** What a viewer does to change a setting on the TV. */
const steps: Readonly<Partial<Record<SettingKey, TextKey>>> = {
    captionsEnabled: 'onTv.captionsEnabled',
    doNotDisturbEnabled: 'onTv.doNotDisturbEnabled',
};

/** A setting that this page does not change. Enter says how it is changed, and shows the change when it comes. */
export function ReadOnlySetting(props: RowProps): JSX.Element {
    const { state, language } = usePage();
    const { setting } = props;
    const step = steps[setting];
    return (
        <ReadOnlyRow
            row={setting}
            name={nameOfSetting(setting, language)}
            value={wordsFor(setting, state.values?.[setting], language)}
            explanation={<Explanation {...props}>{step !== undefined && <p>{language.t(step)}</p>}</Explanation>}
        />
    );
}
