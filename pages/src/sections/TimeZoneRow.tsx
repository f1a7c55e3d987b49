import type { JSX } from 'preact';
import { useMemo } from 'preact/hooks';

import { usePage } from '../components/context';
import { Explanation } from '../components/Explanation';
import { Picker, type Option } from '../components/Picker';
import { Row } from '../components/Row';
import type { RowProps } from '../components/RowProps';
import { RowStatus } from '../components/RowStatus';
import { useDialog } from '../components/useDialog';
import { nameOfSetting, wordsFor } from '../settings/format';

function offsetOf(zone: string, code: string): string {
    const parts = new Intl.DateTimeFormat(code, { timeZone: zone, timeZoneName: 'shortOffset' }).formatToParts();
    return parts.find(({ type }) => type === 'timeZoneName')?.value ?? '';
}

function zoneOptions(code: string): readonly Option[] {
    return Intl.supportedValuesOf('timeZone').map((value) => ({
        value,
        words: `${value.replaceAll('_', ' ')} (${offsetOf(value, code)})`,
    }));
}

export function TimeZoneRow(props: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const { code } = language;
    const { setting } = props;
    const dialog = useDialog();
    const options = useMemo(() => (dialog.isOpen ? zoneOptions(code) : []), [dialog.isOpen, code]);
    const name = nameOfSetting(setting, language);
    const value = state.values?.[setting];
    return (
        <Row
            kind="opens"
            row={setting}
            name={name}
            value={wordsFor(setting, value, language)}
            opensDialog
            explanation={<Explanation {...props} />}
            onUse={dialog.open}
        >
            <RowStatus setting={setting} />
            {dialog.isOpen && (
                <Picker
                    title={name}
                    options={options}
                    chosen={value}
                    onClose={dialog.close}
                    onChoose={(zone) => {
                        dialog.close();
                        void store.set(setting, zone);
                    }}
                />
            )}
        </Row>
    );
}
