import type { JSX } from 'preact';
import { useMemo, useState } from 'preact/hooks';

import { usePage, wordsFor } from '../settings/format';
import { Picker, type Option } from '../components/Picker';
import { RowStatus } from '../components/RowStatus';

const setting = 'timezone';

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

export function TimeZoneRow(): JSX.Element {
    const { store, state, language } = usePage();
    const { t, code } = language;
    const [choosing, setChoosing] = useState(false);
    const options = useMemo(() => (choosing ? zoneOptions(code) : []), [choosing, code]);
    const value = state.values?.[setting];
    return (
        <div class="row" data-row={setting}>
            <button
                type="button"
                class="control"
                aria-haspopup="dialog"
                onClick={() => {
                    setChoosing(true);
                }}
            >
                <span class="name">{t('timezone')}</span>
                <bdi class="value">{wordsFor(setting, value, language)}</bdi>
            </button>
            <RowStatus setting={setting} />
            {choosing && (
                <Picker
                    title={t('timezone')}
                    options={options}
                    chosen={value}
                    onClose={() => {
                        setChoosing(false);
                    }}
                    onChoose={(zone) => {
                        setChoosing(false);
                        void store.set(setting, zone);
                    }}
                />
            )}
        </div>
    );
}
