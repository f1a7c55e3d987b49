import type { ChangeEvent, SettingKey } from 'settings-client';
import { beforeEach, describe, expect, it } from 'vitest';

import { History, lastChangeOf, maxChanges, type Changes } from './history';

function change(sequence: number, key: SettingKey = 'deviceName'): ChangeEvent {
    return { key, from: 'old', to: 'new', origin: 'page', client: null, timestamp: sequence, sequence };
}

let events: ChangeEvent[] | null;
let shown: Changes;
let history: History;

beforeEach(() => {
    events = [];
    shown = null;
    history = new History(
        (limit) => Promise.resolve(events && events.slice(-limit)),
        (changes) => (shown = changes),
    );
});

function numbers(): number[] | undefined {
    return shown?.map(({ sequence }) => sequence);
}

describe('the recent changes', () => {
    it('are read, and then kept current, the newest first', async () => {
        events = [change(1), change(2)];
        history.add(change(2));
        expect(shown).toBeNull();
        await history.reload();
        history.add(change(3));
        expect(numbers()).toEqual([3, 2, 1]);
    });

    it('are those of the host after they were erased or some were missed', async () => {
        await history.reload();
        history.add(change(1));
        await history.reload();
        expect(numbers()).toEqual([]);
    });

    it('stay as they are when the host does not reply', async () => {
        await history.reload();
        history.add(change(1));
        events = null;
        await history.reload();
        expect(numbers()).toEqual([1]);
    });

    it('are not more than the page shows', async () => {
        events = Array.from({ length: maxChanges }, (_, index) => change(index));
        await history.reload();
        history.add(change(maxChanges));
        expect([numbers()?.length, numbers()?.[0]]).toEqual([maxChanges, maxChanges]);
    });

    it('tell who changed a setting last', async () => {
        events = [change(1), change(2), change(3, 'timezone')];
        expect(lastChangeOf(shown, 'deviceName')).toBeUndefined();
        await history.reload();
        expect(lastChangeOf(shown, 'deviceName')?.sequence).toBe(2);
        expect(lastChangeOf(shown, 'friendlyName')).toBeUndefined();
    });
});
