import { expect, test } from 'vitest';

import { MessageLog } from './messageLog';
import type { Trace } from './messages';

function trace(text: string): Trace {
    return { timestamp: 1, direction: 'in', listener: 'socket', client: 1, text };
}

function texts(log: MessageLog): string[] {
    return log.view().messages.map((message) => message.text);
}

function fill(log: MessageLog, first: number, last: number): void {
    for (let number = first; number <= last; number += 1) {
        log.add(trace(String(number)));
    }
}

test('the newest 200 messages are kept, oldest first, each with its number', () => {
    const log = new MessageLog();
    fill(log, 1, 203);
    const { messages } = log.view();
    expect(messages).toHaveLength(200);
    expect(messages.map(({ serial, text }) => `${serial} ${text}`)).toEqual(
        Array.from({ length: 200 }, (_, index) => `${index + 4} ${index + 4}`),
    );
});

test('a message has its kind', () => {
    const log = new MessageLog();
    log.add(trace('{"type":24}'));
    expect(log.view().messages[0]).toEqual({ ...trace('{"type":24}'), serial: 1, kind: 'SetSettings' });
});

test('a pause freezes the view and counts new messages, which are shown afterwards', () => {
    const log = new MessageLog(3);
    fill(log, 1, 2);
    log.setPaused(true);
    log.setPaused(true);
    fill(log, 3, 4);
    expect(texts(log)).toEqual(['1', '2']);
    expect(log.view()).toMatchObject({ paused: true, waiting: 2, lost: 0 });
    log.setPaused(false);
    expect(texts(log)).toEqual(['2', '3', '4']);
    expect(log.view()).toMatchObject({ paused: false, waiting: 0, lost: 0 });
});

test('a pause loses only what the log cannot hold, and counts it', () => {
    const log = new MessageLog(3);
    log.setPaused(true);
    fill(log, 1, 3);
    expect(log.view()).toMatchObject({ waiting: 3, lost: 0 });
    fill(log, 4, 5);
    expect(log.view()).toMatchObject({ messages: [], waiting: 5, lost: 2 });
    log.setPaused(false);
    expect(texts(log)).toEqual(['3', '4', '5']);
});

test('clearing removes shown and held back messages, and keeps the pause', () => {
    const log = new MessageLog(3);
    fill(log, 1, 2);
    log.setPaused(true);
    fill(log, 3, 4);
    log.clear();
    expect(log.view()).toEqual({ messages: [], paused: true, waiting: 0, lost: 0 });
    log.setPaused(false);
    expect(texts(log)).toEqual([]);
    fill(log, 5, 5);
    expect(texts(log)).toEqual(['5']);
});

test('a view does not change', () => {
    const log = new MessageLog(3);
    fill(log, 1, 1);
    const { messages } = log.view();
    fill(log, 2, 5);
    expect(messages.map(({ text }) => text)).toEqual(['1']);
});
