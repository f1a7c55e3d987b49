import type { JSX, RefObject } from 'preact';

import type { SectionId } from '../sections/rows';
import { Icon } from '../icons';
import { sections } from '../sections/Section';
import { usePage } from './context';

interface Props {
    readonly menu: RefObject<HTMLElement>;
    readonly current: SectionId;
    readonly onShow: (id: SectionId) => void;
    readonly onEnter: (id: SectionId) => void;
}

/** The menu of sections: the focus shows a section, a click or Enter leads into it. */
export function Menu({ menu, current, onShow, onEnter }: Props): JSX.Element {
    const { t } = usePage().language;
    return (
        <nav class="menu" ref={menu} aria-label={t('page.sections')}>
            <h1>{t('page.title')}</h1>
            <ul>
                {sections.map(({ id }) => (
                    <li key={id} data-row={id}>
                        <button
                            type="button"
                            class="menu-item"
                            aria-current={id === current ? 'true' : undefined}
                            onFocus={() => {
                                onShow(id);
                            }}
                            onClick={() => {
                                onEnter(id);
                            }}
                        >
                            <Icon name={id} />
                            {t(`section.${id}`)}
                        </button>
                    </li>
                ))}
            </ul>
        </nav>
    );
}
