import type { JSX } from 'preact';

import { About } from './About';
import { AccountActions } from './AccountActions';
import { CaptionsPreview } from './CaptionsPreview';
import { RecentChanges } from './RecentChanges';
import { settingsOf, type SectionId } from './rows';
import { Search } from './Search';
import { SettingRow } from './SettingRow';

interface SectionEntry {
    readonly id: SectionId;
    /** What the section shows below the rows of its settings. */
    readonly More?: () => JSX.Element;
}

/** The sections in the order of the menu. */
export const sections: readonly SectionEntry[] = [
    { id: 'search', More: Search },
    { id: 'device' },
    { id: 'language' },
    { id: 'captions', More: CaptionsPreview },
    { id: 'voice' },
    { id: 'account', More: AccountActions },
    { id: 'changes', More: RecentChanges },
    { id: 'about', More: About },
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
