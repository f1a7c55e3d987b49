import type { ComponentChildren, JSX } from 'preact';
import type { SettingKey } from 'settings-client';

import { isReadOnly } from '../settings/catalogue';
import { changedBy } from '../settings/changedBy';
import { lastChangeOf } from '../state/history';
import { usePage } from './context';
import type { RowProps } from './RowProps';

interface Props extends RowProps {
    /** What the choices mean, or what to do. */
    readonly children?: ComponentChildren;
}

/** What a setting is, why it cannot be changed here, and who changed it last. */
export function Explanation({ setting, about, children }: Props): JSX.Element {
    const { t } = usePage().language;
    return (
        <>
            {about !== undefined && <p>{about}</p>}
            {isReadOnly(setting) && <p>{t('onTv.only')}</p>}
            {children}
            <LastChange setting={setting} />
        </>
    );
}

function LastChange({ setting }: { readonly setting: SettingKey }): JSX.Element | null {
    const { state, language } = usePage();
    const change = lastChangeOf(state.changes, setting);
    return change === undefined ? null : <p class="change">{changedBy(change, language)}</p>;
}
