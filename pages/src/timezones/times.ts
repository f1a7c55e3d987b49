import { useEffect, useState } from 'preact/hooks';

import { kept } from '../i18n/kept';

const formatsIn = kept((code) =>
    kept(
        (timeZone) => new Intl.DateTimeFormat(code, { timeZone, weekday: 'short', hour: 'numeric', minute: '2-digit' }),
    ),
);

/** Weekday and time of day in a zone; empty when the browser does not know it. */
function localTime(zone: string, code: string, now: number): string {
    try {
        return formatsIn(code)(zone).format(now);
    } catch {
        return '';
    }
}

const minute = 60_000;

/** The beginning of the present minute, in milliseconds since the epoch. */
export function useMinute(): number {
    const [now, setNow] = useState(() => Date.now());
    useEffect(() => {
        const timer = setTimeout(
            () => {
                setNow(Date.now());
            },
            minute - (now % minute),
        );
        return () => {
            clearTimeout(timer);
        };
    }, [now]);
    return now - (now % minute);
}

/**
 * The local time in a zone; empty until it is its turn. Each zone has a timer of its own, because the times of a hundred zones
 * together would keep the next key waiting.
 */
export function useLocalTime(zone: string, code: string, now: number): string {
    const [time, setTime] = useState('');
    useEffect(() => {
        const timer = setTimeout(() => {
            setTime(localTime(zone, code, now));
        });
        return () => {
            clearTimeout(timer);
        };
    }, [zone, code, now]);
    return time;
}
