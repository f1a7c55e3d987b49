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

/** How long the work for times may hold up the next key, in milliseconds. */
const slice = 8;
const waiting = new Set<() => void>();

function workSlice(): void {
    const start = performance.now();
    for (const task of waiting) {
        waiting.delete(task);
        task();
        if (performance.now() - start > slice) {
            break;
        }
    }
    if (waiting.size > 0) {
        setTimeout(workSlice);
    }
}

/** Runs a task soon, in slices. Returns: a function that cancels it. */
function runSoon(task: () => void): () => void {
    if (waiting.size === 0) {
        setTimeout(workSlice);
    }
    waiting.add(task);
    return () => waiting.delete(task);
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

/** The local time in a zone; empty until it is its turn, because the times of a hundred zones take long to make. */
export function useLocalTime(zone: string, code: string, now: number): string {
    const [time, setTime] = useState('');
    useEffect(
        () =>
            runSoon(() => {
                setTime(localTime(zone, code, now));
            }),
        [zone, code, now],
    );
    return time;
}
