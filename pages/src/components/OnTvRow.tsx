import type { JSX } from 'preact';
import { useState } from 'preact/hooks';
import type { SettingKey } from 'settings-client';

import type { TextKey } from '../i18n/en';
import { Icon } from '../icons';
import { nameOfSetting, wordsFor } from '../settings/format';
import { usePage } from './context';
import { Explanation } from './Explanation';
import { Panel } from './Panel';
import { Row } from './Row';
import type { RowProps } from './RowProps';
import { useDialog } from './useDialog';

/** What a viewer does to change a setting on the TV. */
const steps: Readonly<Partial<Record<SettingKey, TextKey>>> = {
    captionsEnabled: 'onTv.captionsEnabled',
    doNotDisturbEnabled: 'onTv.doNotDisturbEnabled',
};

/** A setting that only the TV changes. Enter says how, and waits for the change. */
export function OnTvRow(props: RowProps): JSX.Element {
    const { state, language } = usePage();
    const { setting } = props;
    const panel = useDialog();
    const name = nameOfSetting(setting, language);
    const value = wordsFor(setting, state.values?.[setting], language);
    const step = steps[setting];
    const explanation = <Explanation {...props}>{step !== undefined && <p>{language.t(step)}</p>}</Explanation>;
    return (
        <Row
            kind="shows"
            row={setting}
            name={name}
            value={value}
            opensDialog
            explanation={explanation}
            onUse={panel.open}
        >
            {panel.isOpen && (
                <Panel title={name} explanation={<Explanation {...props} />} onClose={panel.close}>
                    {step !== undefined && <p class="step">{language.t(step)}</p>}
                    <Now value={value} />
                    <div class="buttons" data-row="close">
                        <button type="button" class="button" onClick={panel.close}>
                            {language.t('close')}
                        </button>
                    </div>
                </Panel>
            )}
        </Row>
    );
}

/** The value, and that it changed since this was opened. */
function Now({ value }: { readonly value: string }): JSX.Element {
    const { t } = usePage().language;
    const [before] = useState(value);
    const [isChanged, setChanged] = useState(false);
    if (value !== before && !isChanged) {
        setChanged(true);
    }
    return (
        <p class="now" role="status" data-kind={isChanged ? 'changed' : undefined}>
            <Icon name={isChanged ? 'done' : 'waiting'} />
            {t(isChanged ? 'onTv.changed' : 'onTv.now', { value })}
        </p>
    );
}
