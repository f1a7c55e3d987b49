import { createContext } from 'preact';
import { useContext } from 'preact/hooks';

import type { Language } from '../i18n/language';
import type { SectionId } from '../sections/rows';
import type { State, Store } from '../state/store';

export interface PageContents {
    readonly store: Store;
    readonly state: State;
    readonly language: Language;
    /** Shows a row of a section, and focuses it. */
    readonly goTo: (section: SectionId, row: string) => void;
}

/** What every component of the settings page works with. There is none outside of a provider. */
export const Page = createContext(undefined as unknown as PageContents);

export function usePage(): PageContents {
    return useContext(Page);
}
