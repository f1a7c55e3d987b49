import type { JSX } from 'preact';

import { nameOfSetting, wordsFor } from '../settings/format';
import { usePage } from './context';
import { Explanation } from './Explanation';
import { Row } from './Row';
import type { RowProps } from './RowProps';
import { RowStatus } from './RowStatus';

/** Whether the introduction to a mode was seen. One that was seen can be shown again. */
export function IntroductionRow(props: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const { setting, about } = props;
    const value = state.values?.[setting];
    const isSeen = value === 'true';
    return (
        <Row
            kind={isSeen ? 'acts' : 'shows'}
            row={setting}
            name={language.t('introduction.again')}
            value={wordsFor(setting, value, language)}
            explanation={<Explanation {...props} about={`${nameOfSetting(setting, language)}. ${about ?? ''}`} />}
            onUse={() => {
                if (isSeen) {
                    void store.set(setting, 'false');
                } else {
                    store.markUnchanged(setting);
                }
            }}
        >
            <RowStatus setting={setting} />
        </Row>
    );
}
