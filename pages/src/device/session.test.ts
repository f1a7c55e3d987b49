import { beforeEach, expect, test } from 'vitest';

import type { Frame, Trace } from './messages';
import { DeviceSession } from './session';

let sent: string[];
let traces: Trace[];
let replies: string[];
let session: DeviceSession;

beforeEach(() => {
    [sent, traces, replies] = [[], [], []];
    session = new DeviceSession(
        (text) => sent.push(text),
        (trace) => traces.push(trace),
    );
    session.opened();
});

const note = (reply: Frame) => replies.push(JSON.stringify(reply));
const trace = { timestamp: 1, direction: 'in', door: 'socket', client: 1, text: '{"type":24}' };

test('commands get their replies in order, with traces between them', () => {
    session.request({ command: 'captions', enabled: true }, note);
    session.request({ command: 'fly' }, note);
    session.received(JSON.stringify({ trace }));
    session.received('{"ok":true}');
    session.received(JSON.stringify({ trace }));
    session.received('{"error":{"code":"unknown-command"}}');
    expect(sent).toEqual(['{"command":"captions","enabled":true}', '{"command":"fly"}']);
    expect(replies).toEqual(['{"ok":true}', '{"error":{"code":"unknown-command"}}']);
    expect(traces).toHaveLength(2);
});

test('a lost connection fails pending commands and later ones', () => {
    session.request({ command: 'fly' }, note);
    session.closed();
    session.request({ command: 'fly' }, note);
    expect(replies.map((reply) => JSON.parse(reply) as unknown)).toMatchObject([
        { error: { code: 'no-reply' } },
        { error: { code: 'no-connection' } },
    ]);
    expect(sent).toHaveLength(1);
});

test('after a reconnect a reply belongs to the new command', () => {
    session.request({ command: 'captions', enabled: true }, () => undefined);
    session.closed();
    session.opened();
    session.request({ command: 'fly' }, note);
    session.received('{"ok":true}');
    expect(replies).toEqual(['{"ok":true}']);
});
