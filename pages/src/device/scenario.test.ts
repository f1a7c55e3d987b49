import { expect, test } from 'vitest';

import { messageOf, sentByHost } from './message.fixture';
import { scenarioOf } from './scenario';

test('a scenario has a title and one step a message; frames stay as they were', () => {
    const start = Date.UTC(2026, 0, 2, 3, 4, 5, 6);
    const exact = '{"type":24,"timestamp":12345678901234567890,"type":24,"to":"\\u0041"}';
    const scenario = scenarioOf([
        messageOf(exact, { listener: 'page', client: 3, timestamp: start }),
        sentByHost({ notice: { reread: [] } }, { listener: 'all', client: null, timestamp: start + 15 }),
        messageOf('hello "\n', { timestamp: start + 20 }),
        messageOf('{"type":\r\n18}', { timestamp: start + 21 }),
    ]);
    expect(scenario.split('\n')).toEqual([
        '{"scenario": 1, "title": "Copied from the simulated TV, 2026-01-02T03:04:05.006Z"}',
        `{"time": 0, "at": "page-3", "sent": ${exact}}`,
        '{"time": 15, "at": "all", "received": {"notice":{"reread":[]}}}',
        '{"time": 20, "at": "socket-1", "sentText": "hello \\"\\n"}',
        '{"time": 21, "at": "socket-1", "sent": {"type":  18}}',
        '',
    ]);
});

test('the time of a scenario never decreases, also when the clock of the host does', () => {
    const times = [5_000, 6_000, 1_000, 6_500].map((timestamp) => messageOf({}, { timestamp }));
    expect([...scenarioOf(times).matchAll(/"time": (\d+)/g)].map(([, time]) => Number(time))).toEqual([
        0, 1_000, 1_000, 1_500,
    ]);
});

// The test SettingsCtlReplay.PlaysWhatThePageCopies plays this file. "npm test -- -u" writes it anew.
test('a scenario is what settingsctl replay takes', async () => {
    const remote = { listener: 'socket', client: 4, timestamp: Date.UTC(2026, 0, 2) } as const;
    const page = { listener: 'page', client: 5, timestamp: remote.timestamp + 2 } as const;
    const device = { listener: 'device', client: 6, timestamp: remote.timestamp + 3 } as const;
    const all = { listener: 'all', client: null, timestamp: remote.timestamp + 5 } as const;
    const setName = { type: 24, messageId: 'r2', answer: true, timestamp: 1_700_000_000_000 };
    const name = { settingDBId: 'deviceName', from: 'TV', to: 'Den' };
    const event = { type: 25, messageId: 'host-1-1', timestamp: remote.timestamp + 4, sequence: 58, origin: 'socket' };
    const hello = { version: '1.1.0', run: 'c48e1f70d2a94b5f8e63b07a15d9c2e4', sequence: 57 };
    const answer = { outcome: 'changed', settingDBId: 'deviceName', value: 'Den' };
    const scenario = scenarioOf([
        sentByHost({ type: 18, messageId: 'm9', payload: { isOrliaSelectedAsVA: true } }, remote),
        messageOf({ messageId: 'r1', hello: { client: 'remote' } }, remote),
        sentByHost({ messageId: 'r1', hello }, remote),
        messageOf({ messageId: 'p1', page: {} }, remote),
        messageOf({ type: 7, messageId: 'g1', payload: { settings: ['deviceName'] } }, page),
        sentByHost({ type: 7, messageId: 'g1', payload: { settings: { deviceName: 'TV' } } }, page),
        messageOf({ ...setName, payload: { settingDBId: 'deviceName', to: 'Den' } }, remote),
        sentByHost({ ...event, client: 'remote', payload: name }, all),
        sentByHost({ type: 24, messageId: 'r2', payload: answer }, remote),
        messageOf({ command: 'captions', enabled: true }, device),
        sentByHost({ notice: { reread: ['captionsEnabled'] } }, all),
        sentByHost({ ok: true }, device),
        messageOf('hello', page),
        sentByHost({ error: { code: 'not-json', message: 'the frame is not JSON' } }, page),
    ]);
    await expect(scenario).toMatchFileSnapshot('../../../tests/clients/settingsctl/copied.jsonl');
});
