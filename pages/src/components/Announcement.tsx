import type { JSX } from 'preact';
import { useEffect, useState } from 'preact/hooks';

import { shownFor } from '../state/store';
import { nameOfSetting, usePage, wordsFor } from '../settings/format';

/** What changed without this page's doing. */
export function Announcement(): JSX.Element {
    const { state, language } = usePage();
    const { announcement } = state;
    const [hidden, setHidden] = useState(0);
    const number = announcement?.number ?? 0;
    useEffect(() => {
        const timer = setTimeout(() => {
            setHidden(number);
        }, shownFor);
        return () => {
            clearTimeout(timer);
        };
    }, [number]);
    const words = () => {
        if (announcement === null || hidden === number) {
            return '';
        }
        const { key, value, origin } = announcement;
        const filled = { name: nameOfSetting(key, language), value: wordsFor(key, value, language) };
        return language.t(origin === null ? 'changed' : `changed.${origin}`, filled);
    };
    return (
        <p class="announcement" role="status">
            {words()}
        </p>
    );
}
