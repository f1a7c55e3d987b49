import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Explanation } from '../components/Explanation';
import { Row } from '../components/Row';
import type { RowProps } from '../components/RowProps';
import { RowStatus } from '../components/RowStatus';
import { useDialog } from '../components/useDialog';
import { nameOfSetting, wordsFor } from '../settings/format';
import { useLocalTime, useMinute } from '../timezones/times';
import { TimeZonePanel } from '../timezones/TimeZonePanel';
import { useCities } from '../timezones/useZones';

/** The time zone: its city, as soon as the names of the cities are loaded, and the time there. */
export function TimeZoneRow(props: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const { setting } = props;
    const panel = useDialog();
    const name = nameOfSetting(setting, language);
    const value = state.values?.[setting];
    const time = useLocalTime(value ?? '', language.code, useMinute(), 'time');
    useCities(language.code);
    return (
        <Row
            kind="opens"
            row={setting}
            name={name}
            value={
                <>
                    {wordsFor(setting, value, language)}
                    {time !== '' && <span class="time"> · {time}</span>}
                </>
            }
            opensDialog
            explanation={<Explanation {...props} />}
            onUse={panel.open}
        >
            <RowStatus setting={setting} />
            {panel.isOpen && (
                <TimeZonePanel
                    title={name}
                    value={value}
                    onClose={panel.close}
                    onChoose={(zone) => {
                        panel.close();
                        void store.set(setting, zone);
                    }}
                />
            )}
        </Row>
    );
}
