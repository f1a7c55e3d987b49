import { createContext } from 'preact';
import { useContext } from 'preact/hooks';

import { languageFor, type Language } from '../i18n/language';
import { Store, type State } from '../state/store';

export interface PageContents {
    readonly store: Store;
    readonly state: State;
    readonly language: Language;
}

/** What every component of the settings page works with. */
export const Page = createContext<PageContents>({
    store: new Store(() => false),
    state: new Store(() => false).state,
    language: languageFor('en'),
});

export function usePage(): PageContents {
    return useContext(Page);
}
