import type { JSX } from 'preact';

import { hostAddress } from '../address';
import { usePage } from '../components/context';
import { ReadOnlyRow } from '../components/ReadOnlyRow';
import type { Language } from '../i18n/language';
import { useHealth, type Health } from '../state/health';

declare const PAGES_VERSION: string;

/** How the host is, its versions, and its address. */
export function About(): JSX.Element {
    const { store, state, language } = usePage();
    const { t } = language;
    const health = useHealth(state.connection);
    const versionWords = (number: string | null | undefined) =>
        number ? t('about.version', { version: number }) : t('value.unknown');
    return (
        <>
            <ReadOnlyRow row="health" name={t('about.health')} value={healthWords(health, language)} />
            {health?.faults !== undefined && (
                <ReadOnlyRow row="faults" name={t('about.faults')} value={health.faults.join(', ')} />
            )}
            <ReadOnlyRow row="version" name={t('about.host')} value={versionWords(health?.version)} />
            <ReadOnlyRow row="wire" name={t('about.wire')} value={versionWords(store.wireVersion)} />
            <ReadOnlyRow row="pages" name={t('about.pages')} value={versionWords(PAGES_VERSION)} />
            <ReadOnlyRow row="address" name={t('about.address')} value={new URL(hostAddress()).origin} />
        </>
    );
}

/** The health in words. */
function healthWords(health: Health | null, { t }: Language): string {
    switch (health?.status) {
        case 'ok':
            return t('health.ok');
        case 'degraded':
            return t('health.degraded');
        case 'not-serving':
            return t('health.not-serving');
        case 'recovered':
            return t(health.storage?.recoveredFrom === 'backup' ? 'health.backup' : 'health.defaults');
        default:
            return t('value.unknown');
    }
}
