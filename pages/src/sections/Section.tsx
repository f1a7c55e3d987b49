import type { JSX } from 'preact';
import { catalogue, type Kind, type SettingKey } from 'settings-client';

import { ChoiceRow } from '../components/ChoiceRow';
import { usePage } from '../components/context';
import { EditRow } from '../components/EditRow';
import { ReadOnlySetting } from '../components/ReadOnlyRow';
import type { RowProps } from '../components/RowProps';
import { SwitchRow } from '../components/SwitchRow';
import { isReadOnly } from '../settings/catalogue';
import { AccountActions } from './AccountActions';
import { CaptionsPreview } from './CaptionsPreview';
import { LocaleList } from './LocaleList';
import { rows, settingsOf, type SectionId } from './rows';
import { TimeZoneRow } from './TimeZoneRow';

const rowOfKind: Readonly<Record<Kind, (props: RowProps) => JSX.Element>> = {
    text: EditRow,
    list: EditRow,
    switch: SwitchRow,
    choice: ChoiceRow,
    locales: LocaleList,
    timezone: TimeZoneRow,
};

function SettingRow({ setting }: { readonly setting: SettingKey }): JSX.Element {
    const { t } = usePage().language;
    const { about, parts, isShownOnly = false } = rows[setting];
    const Row = isShownOnly || isReadOnly(setting) ? ReadOnlySetting : rowOfKind[catalogue[setting].kind];
    return <Row setting={setting} about={about && t(about)} parts={parts?.map((part) => t(part))} />;
}

interface SectionEntry {
    readonly id: SectionId;
    /** What the section shows below the rows of its settings. */
    readonly More?: () => JSX.Element;
}

/** The sections in the order of the menu. */
export const sections: readonly SectionEntry[] = [
    { id: 'device' },
    { id: 'language' },
    { id: 'captions', More: CaptionsPreview },
    { id: 'voice' },
    { id: 'doNotDisturb' },
    { id: 'account', More: AccountActions },
];

export function Section({ id }: { readonly id: SectionId }): JSX.Element {
    const More = sections.find((section) => section.id === id)?.More;
    return (
        <>
            {settingsOf(id).map((setting) => (
                <SettingRow key={setting} setting={setting} />
            ))}
            {More !== undefined && <More />}
        </>
    );
}
