import type { JSX } from 'preact';

import { nameOfSetting, wordsFor } from '../settings/format';
import { usePage } from './context';
import type { RowProps } from './RowProps';
import { RowStatus } from './RowStatus';

/** A setting that is on or off. */
export function SwitchRow({ setting, about }: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const value = state.values?.[setting];
    const isOn = value === 'true';
    return (
        <div class="row" data-row={setting}>
            <button
                type="button"
                class="control"
                role="switch"
                aria-checked={isOn}
                aria-label={nameOfSetting(setting, language)}
                aria-describedby={about === undefined ? undefined : `about-${setting}`}
                onClick={() => {
                    if (state.rows[setting]?.kind !== 'saving') {
                        void store.set(setting, isOn ? 'false' : 'true');
                    }
                }}
            >
                <span class="name">{nameOfSetting(setting, language)}</span>
                <span class="value">
                    <bdi>{wordsFor(setting, value ?? '', language)}</bdi> <span class="switch" aria-hidden="true" />
                </span>
                {about !== undefined && (
                    <span class="about" id={`about-${setting}`}>
                        {about}
                    </span>
                )}
            </button>
            <RowStatus setting={setting} />
        </div>
    );
}
