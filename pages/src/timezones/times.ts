import { useEffect, useState } from 'preact/hooks';

import { kept } from '../i18n/kept';

function formats(options: Intl.DateTimeFormatOptions): (code: string) => (timeZone: string) => Intl.DateTimeFormat {
    return kept((code) =>
        kept((timeZone) => new Intl.DateTimeFormat(code, { timeZone, hour: 'numeric', minute: '2-digit', ...options })),
    );
}

/** What is told of the time in a zone. */
const formatsOf = { time: formats({}), 'day and time': formats({ weekday: 'short' }) } as const;
type Told = keyof typeof formatsOf;

/** Empty when the browser does not know the zone. */
function localTime(zone: string, code: string, now: number, told: Told): string {
    try {
        return formatsOf[told](code)(zone).format(now);
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
export function useLocalTime(zone: string, code: string, now: number, told: Told): string {
    const [time, setTime] = useState('');
    useEffect(() => {
        const timer = setTimeout(() => {
            setTime(localTime(zone, code, now, told));
        });
        return () => {
            clearTimeout(timer);
        };
    }, [zone, code, now, told]);
    return time;
}
