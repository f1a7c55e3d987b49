import { expect, test } from 'vitest';

import type { Direction } from './messages';
import { wordsOf } from './words';

const event = { type: 25, origin: 'socket', payload: { settingDBId: 'deviceName', from: 'n7', to: 'n8' } };
const catalogue = { settings: [{ key: 'deviceName' }, { key: 'timezone' }] };

test.each<[Direction, object, string]>([
    ['out', { ...event, client: 'settingsctl' }, 'deviceName: n7 → n8, by settingsctl'],
    ['out', event, 'deviceName: n7 → n8, by socket'],
    [
        'out',
        { type: 25, origin: 'device', payload: { settingDBId: 'a', from: '', to: '' } },
        'a: (empty) → (empty), by device',
    ],
    ['in', { type: 24, payload: { settingDBId: 'deviceName', to: 'n8' } }, 'Set deviceName to n8'],
    ['in', { type: 24 }, 'Set undefined to undefined'],
    ['out', { type: 24, payload: { outcome: 'changed', value: 'n8' } }, 'changed: n8'],
    [
        'out',
        { type: 24, payload: { outcome: 'changed', value: 'n7', applied: false } },
        'changed: n7, refused by the voice SDK',
    ],
    ['out', { type: 24, payload: { outcome: 'unchanged', value: '' } }, 'unchanged: (empty)'],
    [
        'out',
        { type: 24, payload: { outcome: 'refused', reason: 'stale', message: 'too old', value: 'n7' } },
        'refused, stale: too old',
    ],
    ['in', { type: 7, payload: { settings: ['deviceName', 'timezone'] } }, 'Read deviceName, timezone'],
    ['in', { type: 7, payload: { settings: [] } }, 'Read every setting'],
    ['out', { type: 7, payload: { settings: { deviceName: 'n8', a: '' } } }, 'deviceName n8, a (empty)'],
    ['in', { type: 18, messageId: 'm' }, 'IsOrliaSelectedVA'],
    ['out', { type: 18, payload: { isOrliaSelectedAsVA: true } }, 'isOrliaSelectedAsVA true'],
    ['in', { type: 22 }, 'LogOut'],
    ['out', { type: 22, payload: { outcome: 'done' } }, 'done'],
    ['out', { notice: { reread: ['captionsEnabled', 'timezone'] } }, 'Read again: captionsEnabled, timezone'],
    [
        'in',
        { messageId: 'm', hello: { client: 'remote', resume: { run: '5f', sequence: 6 } } },
        'hello client remote, resume run 5f, sequence 6',
    ],
    [
        'out',
        { messageId: 'm', hello: { version: '1.1.0', run: '5f', sequence: 7, missed: true } },
        'version 1.1.0, sequence 7, missed true',
    ],
    [
        'in',
        { messageId: 'm', history: { settingDBId: 'deviceName', limit: 2 } },
        'history settingDBId deviceName, limit 2',
    ],
    ['out', { messageId: 'm', history: { events: [event, event] } }, 'events 2'],
    ['out', { messageId: 'm', history: { events: [] } }, 'events (none)'],
    ['in', { messageId: 'm', catalogue: {} }, 'catalogue'],
    ['out', { messageId: 'm', catalogue }, 'settings 2'],
    ['in', { messageId: 'm', backup: {} }, 'backup'],
    ['out', { messageId: 'm', backup: { file: 'b.1' } }, 'file b.1'],
    ['out', { messageId: 'm', status: { health: { status: 'ok' } } }, 'health status ok'],
    [
        'in',
        { batch: [{ type: 24, payload: { settingDBId: 'a', to: '1' } }, { type: 18 }, 7] },
        'Batch: Set a to 1; IsOrliaSelectedVA; 7',
    ],
    ['out', { error: { code: 'bad-batch', message: 'too many' } }, 'refused, bad-batch: too many'],
    ['out', { error: { code: 'no-message-id', message: 'none', index: 1 } }, 'refused, no-message-id: none, index 1'],
    ['in', { command: 'captions', enabled: false }, 'captions off'],
    ['in', { command: 'setting', key: 'deviceName', value: 'Den' }, 'setting deviceName Den'],
    ['in', { command: 'locales', values: ['fr-FR', 'en-US'] }, 'locales fr-FR, en-US'],
    ['in', { command: 'fault', name: 'slow', value: 200, enabled: true }, 'fault slow 200 on'],
    ['out', { ok: true }, 'done'],
    ['out', { ok: true, changed: false }, 'unchanged'],
])('%s %j reads %s', (direction, frame, words) => {
    expect(wordsOf(frame as Record<string, unknown>, direction)).toBe(words);
});
