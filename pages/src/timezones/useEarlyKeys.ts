import { useLayoutEffect, useState } from 'preact/hooks';

import { isForPage } from '../focus/keys';
import { keyOf, type Key } from './useArrows';
import type { Loading } from './useZones';

export interface EarlyKeys {
    /** Returns: false when the key is not one of those that wait. */
    readonly keep: (event: KeyboardEvent) => boolean;
    readonly forget: () => void;
}

/** Keeps the arrows and Enter that are pressed while the time zones are loaded, and uses them after that, one a rendering. */
export function useEarlyKeys(
    { regions, hasFailed }: Loading,
    writing: 'ltr' | 'rtl',
    use: (key: Key) => void,
): EarlyKeys {
    const [keys, setKeys] = useState<readonly Key[]>([]);
    const isLoaded = regions !== null;
    useLayoutEffect(() => {
        const [first, ...later] = keys;
        if (first === undefined) {
            return;
        }
        if (isLoaded) {
            setKeys(later);
            use(first);
        } else if (hasFailed) {
            setKeys([]);
        }
    }, [isLoaded, hasFailed, keys]);
    return {
        keep: (event) => {
            const key = !isLoaded && !hasFailed && isForPage(event) ? keyOf(event, writing) : null;
            if (key === null) {
                return false;
            }
            event.preventDefault();
            setKeys((before) => [...before, key]);
            return true;
        },
        forget: () => {
            setKeys([]);
        },
    };
}
