import type { JSX } from 'preact';
import { useEffect, useState } from 'preact/hooks';

import { nameOfSetting, wordsFor } from '../settings/format';
import { messageDuration } from '../state/store';
import { usePage } from './context';

/** Announces changes by others. */
export function Announcement(): JSX.Element {
    const { state, language } = usePage();
    const { announcement } = state;
    const [hidden, setHidden] = useState(0);
    const number = announcement?.number ?? 0;
    useEffect(() => {
        const timer = setTimeout(() => {
            setHidden(number);
        }, messageDuration);
        return () => {
            clearTimeout(timer);
        };
    }, [number]);
    const words = () => {
        if (announcement === null || hidden === number) {
            return '';
        }
        const { key, value, origin } = announcement;
        const values = { name: nameOfSetting(key, language), value: wordsFor(key, value, language) };
        return language.t(origin === null ? 'changed' : `changed.${origin}`, values);
    };
    return (
        <p class="announcement" role="status">
            {words()}
        </p>
    );
}
