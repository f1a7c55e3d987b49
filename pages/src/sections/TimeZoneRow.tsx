import type { JSX } from 'preact';
import { useMemo } from 'preact/hooks';

import { usePage } from '../components/context';
import { Picker, type Option } from '../components/Picker';
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

export function TimeZoneRow({ setting }: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const { code } = language;
    const dialog = useDialog();
    const options = useMemo(() => (dialog.isOpen ? zoneOptions(code) : []), [dialog.isOpen, code]);
    const name = nameOfSetting(setting, language);
    const value = state.values?.[setting];
    return (
        <div class="row" data-row={setting}>
            <button type="button" class="control" aria-haspopup="dialog" onClick={dialog.open}>
                <span class="name">{name}</span>
                <bdi class="value">{wordsFor(setting, value, language)}</bdi>
            </button>
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
        </div>
    );
}
