import { useEffect, useState } from 'preact/hooks';

const formats = new Map<string, Intl.DateTimeFormat>();

/** Weekday and time of day in a zone; empty when the browser does not know it. */
export function localTime(zone: string, code: string, now: number): string {
    try {
        const format =
            formats.get(`${code} ${zone}`) ??
            new Intl.DateTimeFormat(code, { timeZone: zone, weekday: 'short', hour: 'numeric', minute: '2-digit' });
        formats.set(`${code} ${zone}`, format);
        return format.format(now);
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
