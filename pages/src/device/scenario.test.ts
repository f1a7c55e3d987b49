import { expect, test } from 'vitest';

import { messageOf, sentByHost } from './message.fixture';
import { scenarioOf } from './scenario';

test('a scenario has a title and one step a message; frames stay as they were', () => {
    const start = Date.UTC(2026, 0, 2, 3, 4, 5, 6);
    const exact = '{"type":24,"timestamp":12345678901234567890,"type":24,"to":"\\u0041"}';
    const scenario = scenarioOf([
        messageOf(exact, { listener: 'page', client: 3, timestamp: start }),
        sentByHost({ notice: { reread: [] } }, { listener: 'all', client: null, timestamp: start + 15 }),
        messageOf('hello "', { timestamp: start + 20 }),
    ]);
    expect(scenario.split('\n')).toEqual([
        '{"scenario": 1, "title": "Copied from the simulated TV, 2026-01-02T03:04:05.006Z"}',
        `{"time": 0, "at": "page-3", "sent": ${exact}}`,
        '{"time": 15, "at": "all", "received": {"notice":{"reread":[]}}}',
        '{"time": 20, "at": "socket-1", "sentText": "hello \\""}',
        '',
    ]);
});

test('the time of a scenario never decreases, also when the clock of the host does', () => {
    const times = [5_000, 6_000, 1_000, 6_500].map((timestamp) => messageOf({}, { timestamp }));
    expect([...scenarioOf(times).matchAll(/"time": (\d+)/g)].map(([, time]) => Number(time))).toEqual([
        0, 1_000, 1_000, 1_500,
    ]);
});
