import type { JSX, RefObject } from 'preact';
import { useEffect, useMemo, useRef, useState } from 'preact/hooks';

import { Announcement } from './components/Announcement';
import { Banner } from './components/Banner';
import { Page, usePage } from './components/context';
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

interface MenuProps {
    readonly menu: RefObject<HTMLElement>;
    readonly current: SectionId;
    readonly onShow: (id: SectionId) => void;
    readonly onEnter: () => void;
}

/** The menu of sections: the focus shows a section, a click or Enter leads into it. */
function Menu({ menu, current, onShow, onEnter }: MenuProps): JSX.Element {
    const { t } = usePage().language;
    return (
        <nav class="menu" ref={menu} aria-label={t('sections')}>
            <h1>{t('title')}</h1>
            <ul>
                {sections.map(({ id, sign }) => (
                    <li key={id} data-row={id}>
                        <button
                            type="button"
                            class="menu-item"
                            aria-current={id === current ? 'true' : undefined}
                            onFocus={() => {
                                onShow(id);
                            }}
                            onClick={() => {
                                onShow(id);
                                onEnter();
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
    );
}

/** The settings page: a menu of sections, and the rows of one of them. */
export function App({ store }: { readonly store: Store }): JSX.Element {
    const state = useStore(store);
    const [section, setSection] = useState(sectionFromAddress);
    const menu = useRef<HTMLElement>(null);
    const panel = useRef<HTMLElement>(null);
    const locale = localesOf(state.values?.['orliaLocale'])[0];
    const language = useMemo(() => languageFor(locale), [locale]);
    const { t, code, direction } = language;

    useEffect(() => {
        document.documentElement.lang = code;
        document.documentElement.dir = direction;
        document.title = `${t(`section.${section}`)} · ${t('title')}`;
    }, [code, direction, section, t]);
    const enterPanel = useRemoteControl({ menu, panel }, section, direction);

    const show = (id: SectionId) => {
        setSection(id);
        // Browsers ignore too frequent changes of the history.
        if (location.hash !== `#${id}`) {
            history.replaceState(history.state, '', `#${id}`);
        }
    };
    return (
        <Page.Provider value={{ store, state, language }}>
            <Banner />
            <div class="page">
                <Menu menu={menu} current={section} onShow={show} onEnter={enterPanel} />
                <main class="panel" ref={panel}>
                    <h2>{t(`section.${section}`)}</h2>
                    {state.values === null ? (
                        <p role="status">{state.connection === 'connecting' ? t('loading') : ''}</p>
                    ) : (
                        <Section key={section} id={section} />
                    )}
                </main>
            </div>
            <Announcement />
        </Page.Provider>
    );
}
