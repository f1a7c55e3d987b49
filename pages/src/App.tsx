import type { JSX } from 'preact';
import { useEffect, useLayoutEffect, useMemo, useRef } from 'preact/hooks';

import { Banner } from './components/Banner';
import { Page } from './components/context';
import { Menu } from './components/Menu';
import { Messages } from './components/Messages';
import { useSearchKey } from './focus/useSearchKey';
import { useRemoteControl } from './focus/useRemoteControl';
import { languageFor } from './i18n/language';
import { prepareIntl } from './i18n/prepareIntl';
import { Section } from './sections/Section';
import { useSection } from './sections/useSection';
import { localesOf } from './settings/values';
import type { Store } from './state/store';
import { useStore } from './state/useStore';

/** The settings page: a menu of sections, the rows of one of them, and beside these what explains the focused row. */
export function App({ store }: { readonly store: Store }): JSX.Element {
    const state = useStore(store);
    const { current, drawn, show, draw } = useSection();
    const menu = useRef<HTMLElement>(null);
    const list = useRef<HTMLElement>(null);
    const locale = localesOf(state.values?.['orliaLocale'])[0];
    const language = useMemo(() => languageFor(locale), [locale]);
    const { t, code, direction } = language;

    // Before the focus moves: it scrolls.
    useLayoutEffect(() => {
        document.documentElement.lang = code;
        document.documentElement.dir = direction;
        document.title = `${t(`section.${current}`)} · ${t('page.title')}`;
    }, [code, direction, current, t]);
    useEffect(() => {
        prepareIntl(code);
    }, [code]);
    const control = useRemoteControl({ menu, list }, { drawn, current }, direction, draw);
    const page = useMemo(
        () => ({
            store,
            state,
            language,
            goTo: (section: typeof current, row?: string) => {
                control.enterAt({ section, row });
                show(section);
            },
        }),
        [store, state, language, control, show],
    );
    useSearchKey(() => {
        page.goTo('search', 'search-field');
    });
    // Drawn with each change of the page, so that a focus that was lost is found; but not while the focus moves through the menu.
    const isLoaded = state.values !== null;
    const section = useMemo(() => isLoaded && <Section key={drawn} id={drawn} />, [isLoaded, drawn, page]);
    return (
        <Page.Provider value={page}>
            <Banner />
            <div class="page">
                <Menu menu={menu} current={current} onShow={show} onEnter={page.goTo} />
                <main class="list" ref={list}>
                    <h2>{t(`section.${drawn}`)}</h2>
                    {!isLoaded && <p role="status">{state.connection === 'connecting' ? t('page.loading') : ''}</p>}
                    {section}
                </main>
            </div>
            <Messages />
        </Page.Provider>
    );
}
