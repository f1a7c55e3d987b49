import type { JSX } from 'preact';
import { catalogue, type Kind, type SettingKey } from 'settings-client';

import { ChoiceRow } from '../components/ChoiceRow';
import { usePage } from '../components/context';
import { EditRow } from '../components/EditRow';
import { IntroductionRow } from '../components/IntroductionRow';
import { ReadOnlySetting } from '../components/ReadOnlyRow';
import type { RowProps } from '../components/RowProps';
import { SwitchRow } from '../components/SwitchRow';
import { isIntroduction, isReadOnly } from '../settings/catalogue';
import { CaptionsRow } from './CaptionsPreview';
import { LocaleList } from './LocaleList';
import { rows } from './rows';
import { TimeZoneRow } from './TimeZoneRow';

const rowOfKind: Readonly<Record<Kind, (props: RowProps) => JSX.Element>> = {
    text: EditRow,
    list: EditRow,
    switch: SwitchRow,
    choice: ChoiceRow,
    locales: LocaleList,
    timezone: TimeZoneRow,
};

/** The rows of settings that look like no other. */
const rowOfSetting: Readonly<Partial<Record<SettingKey, (props: RowProps) => JSX.Element>>> = {
    captionsFontSize: CaptionsRow,
    captionsStyles: CaptionsRow,
};

/** The row for a setting; the kind decides, but for those that the page does not set, or sets in one way only. */
function rowFor(setting: SettingKey): (props: RowProps) => JSX.Element {
    if (rows[setting].isShownOnly === true || isReadOnly(setting)) {
        return ReadOnlySetting;
    }
    const usual = isIntroduction(setting) ? IntroductionRow : rowOfKind[catalogue[setting].kind];
    return rowOfSetting[setting] ?? usual;
}

/** The row of a setting. */
export function SettingRow({ setting }: { readonly setting: SettingKey }): JSX.Element {
    const { state, language } = usePage();
    const { t, about } = language;
    const { parts, needsHandsFree } = rows[setting];
    const isWithout = needsHandsFree === true && state.values?.['handsFreeEnabled'] !== 'true';
    const Row = rowFor(setting);
    return (
        <Row
            setting={setting}
            about={isWithout ? `${about[setting]} ${t('handsFree.off')}` : about[setting]}
            parts={parts?.map((part) => t(part))}
        />
    );
}
