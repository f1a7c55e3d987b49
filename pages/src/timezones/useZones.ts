import { useEffect, useMemo, useState } from 'preact/hooks';

import { translations } from '../i18n/translations';
import { loadRegions } from './load';
import { indexOf, search, type Names } from './search';
import type { Region, Zone } from './zones';

export interface Loading {
    /** Null until they are loaded. */
    readonly regions: readonly Region[] | null;
    readonly hasFailed: boolean;
    readonly tryAgain: () => void;
}

/** The time zones in a language. */
export function useRegions(code: string): Loading {
    const [regions, setRegions] = useState<readonly Region[] | null>(null);
    const [failures, setFailures] = useState(0);
    const [attempts, setAttempts] = useState(1);
    useEffect(() => {
        loadRegions(code).then(setRegions, () => {
            setFailures(attempts);
        });
    }, [code, attempts]);
    return {
        regions,
        hasFailed: failures === attempts,
        tryAgain: () => {
            setAttempts(attempts + 1);
        },
    };
}

/** Loads the names of the cities, for a page that has been drawn. */
export function useCities(code: string): void {
    const [, setLoaded] = useState('');
    useEffect(() => {
        loadRegions(code).then(
            () => {
                setLoaded(code);
            },
            // Then the browser's name of the zone has to do.
            () => undefined,
        );
    }, [code]);
}

/** The zones that match what was typed, by their names in all languages: those of other languages come when they are loaded. */
export function useSearch(typed: string, regions: readonly Region[], code: string): readonly Zone[] {
    const [others, setOthers] = useState<readonly Names[]>([]);
    const isUsed = typed !== '';
    useEffect(() => {
        if (isUsed) {
            const codes = Object.keys(translations).filter((other) => other !== code);
            Promise.all(codes.map(async (other) => ({ code: other, regions: await loadRegions(other) }))).then(
                setOthers,
                // Then the names in the page's language have to do.
                () => undefined,
            );
        }
    }, [isUsed, code]);
    const index = useMemo(
        () => (isUsed ? indexOf([{ code, regions }, ...others]) : []),
        [isUsed, code, regions, others],
    );
    return useMemo(() => search(index, typed), [index, typed]);
}
