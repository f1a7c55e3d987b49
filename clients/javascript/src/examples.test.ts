// @vitest-environment node
import { expect, test, vi } from 'vitest';

import { connect } from './client.js';
import { examples, everyStep } from './examples.fixture.js';
import { FakeBrowser } from './fakeBrowser.fixture.js';
import { eventsOf, outcomeOf, parseFrame } from './frames.js';

const kinds: Readonly<Record<string, string>> = {
    'get-settings-reply': 'reply',
    'is-orlia-selected-va-reply': 'reply',
    'set-settings-answer': 'reply',
    'open-va-settings-answer': 'reply',
    'log-out-answer': 'reply',
    'hello-reply': 'reply',
    'history-reply': 'reply',
    'setting-changed-event': 'event',
    notice: 'notice',
    refusal: 'refusal',
};

/** What the host sends to a client like this one. */
const received = everyStep.filter(({ at, received, schema }) => at !== 'device' && received && (schema ?? '') in kinds);

/** The frames of a schema, as this client understands them. */
function framesOf(schema: string) {
    const frames = received.filter((step) => step.schema === schema).map((step) => step.received ?? {});
    expect(frames.length, schema).toBeGreaterThan(0);
    return frames.map((frame) => ({ frame, parsed: parseFrame(JSON.stringify(frame)) }));
}

test.each(Object.entries(kinds))('frames of the kind %s in the examples are understood', (schema, kind) => {
    for (const { parsed } of framesOf(schema)) {
        expect(parsed?.kind).toBe(kind);
    }
});

test('an event of the examples is parsed completely', () => {
    const event = examples.get('set-settings')?.find((step) => step.received !== undefined);
    expect(parseFrame(JSON.stringify(event?.received))).toEqual({
        kind: 'event',
        key: 'deviceName',
        from: 'TV',
        to: 'Living room',
        origin: 'socket',
        client: null,
        sequence: 1,
        timestamp: 1795243863837,
    });
});

test('every outcome and reason of the examples is understood', () => {
    const reasons = new Set<unknown>();
    for (const { frame, parsed } of framesOf('set-settings-answer')) {
        const { settingDBId: _key, newest: _newest, ...told } = frame['payload'] as Record<string, unknown>;
        reasons.add(told['reason']);
        expect(parsed?.kind === 'reply' && outcomeOf(parsed)).toMatchObject(told);
    }
    expect(reasons.size).toBe(6);
});

test('the history of the examples is understood', () => {
    for (const { frame, parsed } of framesOf('history-reply')) {
        const { events } = frame['history'] as {
            readonly events: readonly { readonly payload: { to: string } }[];
        };
        expect(parsed?.kind === 'reply' && eventsOf(parsed).map(({ to }) => to)).toEqual(
            events.map(({ payload }) => payload.to),
        );
    }
});

test('a client resumes as in the example', async () => {
    vi.useFakeTimers();
    const log: string[] = [];
    const browser = new FakeBrowser();
    const client = connect(
        {
            address: 'http://tv/',
            status: (status) => log.push(status),
            changed: ({ key, value }) => log.push(`${key}=${value ?? ''}`),
        },
        browser,
    );
    const all = (examples.get('resume') ?? []).filter(({ at, schema }) => at === 'socket' && schema !== 'notice');
    const example = all.slice(all.findIndex(({ sent }) => 'resume' in Object(sent?.['hello'] ?? {})));
    const { run, sequence } = (
        example[0]?.sent?.['hello'] as {
            resume: { run: string; sequence: number };
        }
    ).resume;
    const sent = () =>
        JSON.parse(browser.socket.sent.at(-1) ?? '{}') as {
            messageId: string;
            hello: unknown;
        };
    browser.socket.open();
    const { messageId: greeting } = JSON.parse(browser.socket.sent[0] ?? '{}') as { messageId: string };
    browser.socket.receive({ messageId: greeting, hello: { run, sequence } });
    browser.socket.receive({ messageId: sent().messageId, payload: { settings: {} } });
    await vi.advanceTimersByTimeAsync(0);
    browser.socket.close();
    client.retryNow();
    browser.socket.open();
    expect(sent().hello).toEqual(example[0]?.sent?.['hello']);
    for (const step of example.slice(1, 3)) {
        const { messageId } = sent();
        browser.socket.receive(step.schema === 'hello-reply' ? { ...step.received, messageId } : (step.received ?? {}));
    }
    expect(log).toEqual(['online', 'lost', 'captionsFontSize=FONT_MEDIUM', 'online']);
    vi.useRealTimers();
});
