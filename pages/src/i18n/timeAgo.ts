import { kept } from './kept';

const units = [
    ['second', 60],
    ['minute', 60],
    ['hour', 24],
    ['day', Infinity],
] as const;

const formatIn = kept((code) => new Intl.RelativeTimeFormat(code, { numeric: 'auto' }));

/** How long ago something was, in words: "5 minutes ago". */
export function timeAgo(timestamp: number, code: string, now = Date.now()): string {
    let amount = Math.max(0, now - timestamp) / 1000;
    for (const [unit, size] of units) {
        if (amount < size) {
            return formatIn(code).format(-Math.floor(amount), unit);
        }
        amount /= size;
    }
    return '';
}
