import { useEffect, useState } from 'preact/hooks';
import type { Status } from 'settings-client';

/** What the host says about itself. */
export interface Health {
    readonly status: 'ok' | 'degraded' | 'recovered' | 'not-serving';
    readonly version: string;
    readonly storage?: { readonly recoveredFrom?: 'backup' | 'defaults' };
    /** The simulated faults that are on. */
    readonly faults?: readonly string[];
}

/** The health of the host, read again with each connection; null until it is known. */
export function useHealth(connection: Status): Health | null {
    const [health, setHealth] = useState<Health | null>(null);
    useEffect(() => {
        let isWanted = true;
        void fetch('/healthz')
            .then((reply) => reply.json() as Promise<Health>)
            .catch(() => null)
            .then((found) => {
                if (isWanted) {
                    setHealth(found);
                }
            });
        return () => {
            isWanted = false;
        };
    }, [connection]);
    return health;
}
