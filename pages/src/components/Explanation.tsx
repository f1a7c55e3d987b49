import type { ComponentChildren, JSX } from 'preact';
import type { SettingKey } from 'settings-client';

import { isReadOnly } from '../settings/catalogue';
import { shortened } from '../settings/format';
import { timeAgo } from '../i18n/timeAgo';
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
            {children}
            {isReadOnly(setting) && <p>{t('setOnDevice')}</p>}
            <LastChange setting={setting} />
        </>
    );
}

function LastChange({ setting }: { readonly setting: SettingKey }): JSX.Element | null {
    const { state, language } = usePage();
    const change = state.lastChanges[setting];
    if (change === undefined) {
        return null;
    }
    const who = change.client !== null ? shortened(change.client) : language.t(`by.${change.origin ?? 'unknown'}`);
    const when = timeAgo(change.timestamp, language.code);
    return <p>{language.t('lastChange', { who, when })}</p>;
}
