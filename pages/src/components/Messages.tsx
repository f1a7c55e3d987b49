import type { JSX } from 'preact';
import { useEffect, useState } from 'preact/hooks';

import { nameOfSetting, shortened, wordsFor } from '../settings/format';
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
        const { key, value, event } = announcement;
        const client = event?.client ?? null;
        const origin = event?.origin ?? null;
        return language.t(client !== null ? 'changed.client' : origin !== null ? `changed.${origin}` : 'changed', {
            name: nameOfSetting(key, language),
            value: wordsFor(key, value, language),
            client: shortened(client ?? ''),
        });
    };
    return (
        <p class="announcement" role="status">
            {words()}
        </p>
    );
}
