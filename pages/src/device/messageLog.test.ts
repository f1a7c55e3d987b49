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

test('what a message says is read when it comes', () => {
    const log = new MessageLog(200, () => 7);
    log.connected();
    log.add(trace('{"type":24,"messageId":"m","answer":true,"payload":{"settingDBId":"a","to":"1"}}'));
    expect(log.view().messages[0]).toMatchObject({
        serial: 1,
        kind: 'SetSettings',
        words: 'Set a to 1',
        asks: 1,
        refused: false,
        name: null,
        arrived: 7,
        link: 1,
    });
});

test('the words of a message have a limit', () => {
    const log = new MessageLog();
    log.add(trace(JSON.stringify({ type: 24, payload: { to: 'x'.repeat(60_000) } })));
    expect(log.view().messages[0]?.words).toHaveLength(160);
});

test('a client has the name of its hello; at the socket a request may have its own', () => {
    const log = new MessageLog();
    const names = () => log.view().messages.map(({ name }) => name);
    log.add(trace('{"messageId":"h","hello":{"client":"bridge"}}'));
    log.add(trace('{"type":18,"messageId":"m"}'));
    log.add({ ...trace('{"type":18,"messageId":"m"}'), direction: 'out' });
    log.add(trace('{"type":24,"client":"phone"}'));
    log.add({ ...trace('{"type":24,"client":"phone"}'), listener: 'page' });
    expect(names()).toEqual(['bridge', 'bridge', 'bridge', 'phone', null]);
    log.connected();
    log.add(trace('{"type":18,"messageId":"m"}'));
    expect(names().at(-1)).toBeNull();
});

test('an event has the name of who caused it, and none without', () => {
    const log = new MessageLog();
    const event = (client: object) =>
        ({ ...trace(JSON.stringify({ type: 25, ...client })), direction: 'out' }) as const;
    log.add({ ...event({ client: 'remote' }), listener: 'all', client: null });
    log.add({ ...event({}), listener: 'all', client: null });
    expect(log.view().messages.map(({ name }) => name)).toEqual(['remote', null]);
});

test('the names of at most 512 connections are remembered', () => {
    const log = new MessageLog();
    const greet = (from: number, to: number) => {
        for (let client = from; client <= to; client += 1) {
            log.add({ ...trace(`{"hello":{"client":"c${client}"}}`), client });
        }
    };
    greet(1, 512);
    log.add({ ...trace('{}'), client: 1 });
    expect(log.view().messages.at(-1)?.name).toBe('c1');
    greet(513, 513);
    for (const client of [1, 2]) {
        log.add({ ...trace('{}'), client });
    }
    expect(
        log
            .view()
            .messages.slice(-2)
            .map(({ name }) => name),
    ).toEqual([null, null]);
});

test('a pause freezes the view and counts new messages, which are shown afterwards', () => {
    const log = new MessageLog(3);
    fill(log, 1, 2);
    log.setPaused(true);
    log.setPaused(true);
    fill(log, 3, 4);
    expect(texts(log)).toEqual(['1', '2']);
    expect(log.view()).toMatchObject({ paused: true, waiting: 2 });
    log.setPaused(false);
    expect(texts(log)).toEqual(['2', '3', '4']);
    expect(log.view()).toMatchObject({ paused: false, waiting: 0 });
});

test('a pause loses only what the log cannot hold', () => {
    const log = new MessageLog(3);
    log.setPaused(true);
    fill(log, 1, 3);
    expect(log.view()).toMatchObject({ waiting: 3 });
    fill(log, 4, 5);
    expect(log.view()).toMatchObject({ messages: [], waiting: 5 });
    log.setPaused(false);
    expect(texts(log)).toEqual(['3', '4', '5']);
});

test('clearing removes shown and held back messages, and keeps the pause', () => {
    const log = new MessageLog(3);
    fill(log, 1, 2);
    log.setPaused(true);
    fill(log, 3, 4);
    log.clear();
    expect(log.view()).toMatchObject({ messages: [], paused: true, waiting: 0 });
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

test('a pause also stops the time, so that an answer is not missed that came meanwhile', () => {
    let now = 10;
    const log = new MessageLog(3, () => now);
    log.connected();
    log.setPaused(true);
    now = 20;
    log.connected();
    expect(log.view()).toMatchObject({ time: 10, link: 1 });
    log.setPaused(false);
    expect(log.view()).toMatchObject({ time: 20, link: 2 });
});
