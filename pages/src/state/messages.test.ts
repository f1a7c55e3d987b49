import { afterEach, beforeEach, describe, expect, it, vi } from 'vitest';

import { leastMessageDuration, messageDuration, MessageQueue, type Message } from './messages';

let shown: string[];
let queue: MessageQueue;

function change(key: Message['key'], value: string): void {
    queue.add({ key, value, event: null });
}

/** What is shown, once after each of these times. */
function after(...durations: readonly number[]): string[] {
    return durations.map((duration) => {
        vi.advanceTimersByTime(duration);
        return shown.at(-1) ?? '';
    });
}

beforeEach(() => {
    vi.useFakeTimers();
    shown = [];
    queue = new MessageQueue(([message]) => shown.push(message?.value ?? ''));
});

afterEach(() => {
    vi.useRealTimers();
});

describe('the queue of messages', () => {
    it('shows a message for a while, then none', () => {
        change('friendlyName', 'Telly');
        expect(after(messageDuration - 1, 1)).toEqual(['Telly', '']);
    });

    it('shows each of several messages long enough, in their order', () => {
        change('deviceName', 'Den');
        change('timezone', 'UTC');
        change('friendlyName', 'Telly');
        const { length } = shown;
        expect(after(leastMessageDuration - 1, 1, leastMessageDuration - 1, 1)).toEqual(['Den', 'UTC', 'UTC', 'Telly']);
        expect(after(messageDuration - 1, 1)).toEqual(['Telly', '']);
        expect(length).toBe(3);
    });

    it('gives way at once when the shown message was there long enough', () => {
        change('deviceName', 'Den');
        expect(after(leastMessageDuration)).toEqual(['Den']);
        change('timezone', 'UTC');
        expect(after(0, leastMessageDuration, leastMessageDuration)).toEqual(['UTC', 'UTC', '']);
    });

    it('tells the last of several changes of a setting that wait', () => {
        ['Den', 'Attic', 'Cellar', 'Loft'].forEach((name) => {
            change('deviceName', name);
        });
        expect(after(0, leastMessageDuration, messageDuration)).toEqual(['Den', 'Loft', '']);
    });
});
