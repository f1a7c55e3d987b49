import type { JSX } from 'preact';
import { useEffect, useMemo, useRef, useState } from 'preact/hooks';

import { Announcement } from './components/Announcement';
import { Banner } from './components/Banner';
import { Page } from './settings/format';
import { useRemoteControl } from './focus/useRemoteControl';
import { languageFor, localesOf } from './i18n/language';
import { sections, type SectionId } from './sections/sections';
import type { Store } from './state/store';
import { useStore } from './state/useStore';

interface Props {
    readonly store: Store;
    readonly onRetry: () => void;
}

function sectionFromAddress(): SectionId {
    return sections.find(({ id }) => `#${id}` === location.hash)?.id ?? 'device';
}

/** The settings page: a menu of sections, and the rows of one of them. */
export function App({ store, onRetry }: Props): JSX.Element {
    const state = useStore(store);
    const [section, setSection] = useState(sectionFromAddress);
    const menu = useRef<HTMLElement>(null);
    const panel = useRef<HTMLElement>(null);
    const locale = localesOf(state.values?.['orliaLocale'])[0];
    const language = useMemo(() => languageFor(locale), [locale]);
    const { t, code, direction } = language;
    const Content = sections.find(({ id }) => id === section)?.Content;

    useEffect(() => {
        document.documentElement.lang = code;
        document.documentElement.dir = direction;
        document.title = `${t(`section.${section}`)} · ${t('title')}`;
    }, [code, direction, section, t]);
    const enterPanel = useRemoteControl({ menu, panel }, section, direction);

    const show = (id: SectionId) => {
        setSection(id);
        // A browser that is asked too often stops listening.
        if (location.hash !== `#${id}`) {
            history.replaceState(history.state, '', `#${id}`);
        }
    };
    return (
        <Page.Provider value={{ store, state, language }}>
            <Banner onRetry={onRetry} />
            <div class="page">
                <nav class="menu" ref={menu} aria-label={t('sections')}>
                    <h1>{t('title')}</h1>
                    <ul>
                        {sections.map(({ id, sign }) => (
                            <li key={id} data-row={id}>
                                <button
                                    type="button"
                                    class="menu-item"
                                    aria-current={id === section ? 'true' : undefined}
                                    onFocus={() => {
                                        show(id);
                                    }}
                                    onClick={() => {
                                        show(id);
                                        enterPanel();
                                    }}
                                >
                                    <span class="sign" aria-hidden="true">
                                        {sign}
                                    </span>
                                    {t(`section.${id}`)}
                                </button>
                            </li>
                        ))}
                    </ul>
                </nav>
                <main class="panel" ref={panel}>
                    <h2>{t(`section.${section}`)}</h2>
                    {state.values === null || Content === undefined ? (
                        <p role="status">{state.connection === 'connecting' ? t('loading') : ''}</p>
                    ) : (
                        <Content key={section} />
                    )}
                </main>
            </div>
            <Announcement />
        </Page.Provider>
    );
}
