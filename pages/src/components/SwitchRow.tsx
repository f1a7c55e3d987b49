import type { JSX } from 'preact';

import { nameOfSetting, wordsFor } from '../settings/format';
import { usePage } from './context';
import { Explanation } from './Explanation';
import { Row } from './Row';
import type { RowProps } from './RowProps';
import { RowStatus } from './RowStatus';

/** A setting that is on or off. */
export function SwitchRow(props: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const { setting } = props;
    const value = state.values?.[setting];
    const isOn = value === 'true';
    return (
        <Row
            kind="switches"
            row={setting}
            name={nameOfSetting(setting, language)}
            value={wordsFor(setting, value ?? '', language)}
            isOn={isOn}
            explanation={<Explanation {...props} />}
            onUse={() => {
                if (state.rows[setting]?.kind !== 'saving') {
                    void store.set(setting, isOn ? 'false' : 'true');
                }
            }}
        >
            <RowStatus setting={setting} />
        </Row>
    );
}
