import type { JSX } from 'preact';
import { useEffect, useMemo, useRef, useState } from 'preact/hooks';

import { Banner } from './components/Banner';
import { Page } from './components/context';
import { Menu } from './components/Menu';
import { Messages } from './components/Messages';
import { useSearchKey } from './focus/useSearchKey';
import { useRemoteControl } from './focus/useRemoteControl';
import { languageFor } from './i18n/language';
import type { SectionId } from './sections/rows';
import { Section, sections } from './sections/Section';
import { localesOf } from './settings/values';
import type { Store } from './state/store';
import { useStore } from './state/useStore';

function sectionFromAddress(): SectionId {
    return sections.find(({ id }) => `#${id}` === location.hash)?.id ?? 'device';
}

/** The settings page: a menu of sections, the rows of one of them, and beside these what explains the focused row. */
export function App({ store }: { readonly store: Store }): JSX.Element {
    const state = useStore(store);
    const [section, setSection] = useState(sectionFromAddress);
    const menu = useRef<HTMLElement>(null);
    const list = useRef<HTMLElement>(null);
    const locale = localesOf(state.values?.['orliaLocale'])[0];
    const language = useMemo(() => languageFor(locale), [locale]);
    const { t, code, direction } = language;

    useEffect(() => {
        document.documentElement.lang = code;
        document.documentElement.dir = direction;
        document.title = `${t(`section.${section}`)} · ${t('title')}`;
    }, [code, direction, section, t]);
    const { enterList, enterAt } = useRemoteControl({ menu, list }, section, direction);

    const show = (id: SectionId) => {
        setSection(id);
        // Browsers ignore too frequent changes of the history.
        if (location.hash !== `#${id}`) {
            history.replaceState(history.state, '', `#${id}`);
        }
    };
    const goTo = (id: SectionId, row: string) => {
        enterAt(id, row);
        show(id);
    };
    useSearchKey(() => {
        goTo('search', 'search-field');
    });
    return (
        <Page.Provider value={{ store, state, language, goTo }}>
            <Banner />
            <div class="page">
                <Menu menu={menu} current={section} onShow={show} onEnter={enterList} />
                <main class="list" ref={list}>
                    <h2>{t(`section.${section}`)}</h2>
                    {state.values === null ? (
                        <p role="status">{state.connection === 'connecting' ? t('loading') : ''}</p>
                    ) : (
                        <Section key={section} id={section} />
                    )}
                </main>
            </div>
            <Messages />
        </Page.Provider>
    );
}
