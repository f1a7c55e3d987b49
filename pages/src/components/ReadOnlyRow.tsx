import type { JSX } from 'preact';

import { isReadOnly } from '../settings/catalogue';
import { nameOfSetting, wordsFor } from '../settings/format';
import { usePage } from './context';
import type { RowProps } from './RowProps';

interface Props {
    /** The name of the row in `data-row`. */
    readonly row: string;
    readonly name: string;
    readonly value: string;
    readonly about?: string;
}

/** A value that the page only shows. It takes the focus all the same, so that it can be scrolled to. */
export function ReadOnlyRow({ row, name, value, about = '' }: Props): JSX.Element {
    const label = about === '' ? `${name}: ${value}` : `${name}: ${value}. ${about}`;
    return (
        <div class="row" data-row={row}>
            <div class="control" tabIndex={0} role="group" aria-label={label}>
                <span class="name">{name}</span>
                <bdi class="value">{value}</bdi>
                {about !== '' && <span class="about">{about}</span>}
            </div>
        </div>
    );
}

/** A setting that this page does not change. */
export function ReadOnlySetting({ setting, about }: RowProps): JSX.Element {
    const { state, language } = usePage();
    const reason = isReadOnly(setting) ? language.t('setOnDevice') : undefined;
    return (
        <ReadOnlyRow
            row={setting}
            name={nameOfSetting(setting, language)}
            value={wordsFor(setting, state.values?.[setting], language)}
            about={[reason, about].filter(Boolean).join(' ')}
        />
    );
}
