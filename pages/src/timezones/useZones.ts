import { useEffect, useMemo, useState } from 'preact/hooks';

import { translations } from '../i18n/language';
import { loadZones } from './load';
import { indexOf, search, type ZonesInLanguage } from './search';
import type { Zone } from './zones';

export interface Loading {
    /** Null until they are loaded. */
    readonly zones: readonly Zone[] | null;
    readonly hasFailed: boolean;
    readonly tryAgain: () => void;
}

/** The time zones in a language. */
export function useZones(code: string): Loading {
    const [zones, setZones] = useState<readonly Zone[] | null>(null);
    const [failures, setFailures] = useState(0);
    const [attempts, setAttempts] = useState(1);
    useEffect(() => {
        loadZones(code).then(setZones, () => {
            setFailures(attempts);
        });
    }, [code, attempts]);
    return {
        zones,
        hasFailed: failures === attempts,
        tryAgain: () => {
            setAttempts(attempts + 1);
        },
    };
}

/** The zones that match what was typed, by their names in all languages: those of other languages come when they are loaded. */
export function useSearch(typed: string, zones: readonly Zone[], code: string): readonly Zone[] {
    const [others, setOthers] = useState<readonly ZonesInLanguage[]>([]);
    const isUsed = typed !== '';
    useEffect(() => {
        if (isUsed) {
            const codes = Object.keys(translations).filter((other) => other !== code);
            Promise.all(codes.map(async (other) => ({ code: other, zones: await loadZones(other) }))).then(
                setOthers,
                // Then the names in the page's language have to do.
                () => undefined,
            );
        }
    }, [isUsed, code]);
    const index = useMemo(() => (isUsed ? indexOf([{ code, zones }, ...others]) : []), [isUsed, code, zones, others]);
    return useMemo(() => search(index, typed), [index, typed]);
}
