import type { JSX } from 'preact';

import { ChoiceRow } from '../components/ChoiceRow';
import { EditRow } from '../components/EditRow';
import { captionStyles, fontSizes, usePage, wordsFor } from '../settings/format';
import { ReadOnlyRow } from '../components/ReadOnlyRow';
import { SwitchRow } from '../components/SwitchRow';
import type { MessageKey } from '../i18n/en';
import { AccountSection } from './AccountSection';
import { LocaleList } from './LocaleList';
import { TimeZoneRow } from './TimeZoneRow';

function DeviceSection(): JSX.Element {
    const { t } = usePage().language;
    return (
        <>
            <EditRow setting="deviceName" />
            <EditRow setting="friendlyName" about={t('friendlyName.about')} />
            <EditRow
                setting="companionDevice"
                about={t('companionDevice.about')}
                parts={[t('companionDevice.first'), t('companionDevice.second')]}
            />
        </>
    );
}

function LanguageSection(): JSX.Element {
    return (
        <>
            <LocaleList />
            <TimeZoneRow />
        </>
    );
}

/** A setting that only the television changes. */
function DeviceState({ setting, about }: { readonly setting: MessageKey; readonly about?: string }): JSX.Element {
    const { state, language } = usePage();
    const { t } = language;
    const words = t('setOnDevice');
    return (
        <ReadOnlyRow
            name={t(setting)}
            value={wordsFor(setting, state.values?.[setting], language)}
            about={about === undefined ? words : `${words} ${about}`}
        />
    );
}

function CaptionsSection(): JSX.Element {
    const { state, language } = usePage();
    const { t } = language;
    return (
        <>
            <DeviceState setting="captionsEnabled" />
            <ChoiceRow setting="captionsFontSize" choices={fontSizes} />
            <ChoiceRow setting="captionsStyles" choices={captionStyles} />
            <figure class="preview">
                <figcaption>{t('preview')}</figcaption>
                <div class="scene">
                    <p data-size={state.values?.['captionsFontSize']} data-style={state.values?.['captionsStyles']}>
                        {t('preview.text')}
                    </p>
                </div>
            </figure>
        </>
    );
}

function VoiceSection(): JSX.Element {
    const { t } = usePage().language;
    return (
        <>
            <SwitchRow setting="handsFreeEnabled" about={t('handsFreeEnabled.about')} />
            <SwitchRow setting="handsFreeAlwaysOnEnabled" about={t('handsFreeAlwaysOnEnabled.about')} />
            <SwitchRow setting="handsFreeAlwaysOnDiscovered" about={t('discovered.about')} />
            <SwitchRow setting="pttAlwaysOnEnabled" about={t('pttAlwaysOnEnabled.about')} />
            <SwitchRow setting="pttAlwaysOnDiscovered" about={t('discovered.about')} />
        </>
    );
}

function DoNotDisturbSection(): JSX.Element {
    const { t } = usePage().language;
    return <DeviceState setting="doNotDisturbEnabled" about={t('doNotDisturb.about')} />;
}

export const sections = [
    { id: 'device', sign: '▣', Content: DeviceSection },
    { id: 'language', sign: '文', Content: LanguageSection },
    { id: 'captions', sign: '▤', Content: CaptionsSection },
    { id: 'voice', sign: '◉', Content: VoiceSection },
    { id: 'doNotDisturb', sign: '☾', Content: DoNotDisturbSection },
    { id: 'account', sign: '◍', Content: AccountSection },
] as const;

export type SectionId = (typeof sections)[number]['id'];
