import type { ChangeEvent } from 'settings-client';

import type { Language } from '../i18n/language';
import { timeAgo } from '../i18n/timeAgo';
import { shortened } from './format';

/** Who made a change: the name of the client, else the kind. */
export function whoOf({ client, origin }: ChangeEvent, { t }: Language): string {
    return client === null ? t(`by.${origin ?? 'unknown'}`) : shortened(client);
}

/** By whom and when. */
export function changedBy(change: ChangeEvent, language: Language): string {
    return language.t('change.by', {
        who: whoOf(change, language),
        when: timeAgo(change.timestamp, language.code),
    });
}
