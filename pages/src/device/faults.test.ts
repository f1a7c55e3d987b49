import { expect, test } from 'vitest';

import { examples } from '../../../clients/javascript/src/examples.fixture';
import { faultCommand, faultsOf } from './faults';

const reply = examples.get('device-faults')?.find(({ schema }) => schema === 'device-faults')?.received ?? {};

/** The command after `typed`, as the fault's description in the example has it, with changes. */
function commandOf(name: string, typed: string, change: object = {}): unknown {
    const list = (reply['faults'] as { name: string }[]).map((fault) => ({ ...fault, ...change }));
    const fault = faultsOf({ faults: list }).find((candidate) => candidate.name === name);
    return fault && faultCommand(fault, typed);
}

test('a switch is switched on and off', () => {
    expect(commandOf('storage-full', '')).toEqual({ command: 'fault', name: 'storage-full', enabled: true });
    expect(commandOf('storage-full', '', { on: true })).toMatchObject({ enabled: false });
});

test('milliseconds are a number; without one the host takes its own', () => {
    expect(commandOf('clock-jump', '-5000')).toEqual({
        command: 'fault',
        name: 'clock-jump',
        value: -5000,
        enabled: true,
    });
    expect(commandOf('clock-jump', '')).toEqual({ command: 'fault', name: 'clock-jump', enabled: true });
    expect(commandOf('clock-jump', 'soon')).toMatchObject({ value: 'soon' });
});

test('a setting is a text', () => {
    expect(commandOf('sdk-changes', 'timezone')).toMatchObject({ value: 'timezone', enabled: true });
});

test('another value replaces that of a fault that is on; the same value switches it off', () => {
    const on = { on: true, value: 200 };
    expect(commandOf('sdk-slow', '300', on)).toMatchObject({ value: 300, enabled: true });
    expect(commandOf('sdk-slow', '200', on)).toMatchObject({ enabled: false });
    expect(commandOf('sdk-slow', '', on)).toMatchObject({ enabled: false });
});

test('a host that does not know the command has no faults', () => {
    expect(faultsOf({ error: { code: 'unknown-command', message: 'no' } })).toEqual([]);
});
