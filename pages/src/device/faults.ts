import type { Command } from './commands';
import { isRecord, type Frame } from './messages';
import { listOf } from './words';

/** A fault of the simulator, as the host describes it. */
export interface Fault {
    readonly name: string;
    readonly description: string;
    readonly on: boolean;
    /** Whether it happens when it is switched on, and is never on. */
    readonly once: boolean;
    /** Milliseconds, or the key of a setting. */
    readonly takesValue: boolean;
    /** Its value, or the one that it takes by default; empty without one. */
    readonly value: string;
    /** The settings to choose from; empty when its value is a number. */
    readonly settings: readonly string[];
}

const text = (value: unknown): string => (typeof value === 'string' || typeof value === 'number' ? String(value) : '');

/** The faults in a reply; none in that of a host without them. */
export function faultsOf(reply: Frame): readonly Fault[] {
    return listOf(reply, 'faults')
        .filter(isRecord)
        .map((fault) => ({
            name: text(fault['name']),
            description: text(fault['description']),
            on: fault['on'] === true,
            once: fault['once'] === true,
            takesValue: fault['kind'] === 'milliseconds' || fault['kind'] === 'setting',
            value: text(fault['value'] ?? fault['default']),
            settings: listOf(fault, 'settings').map(text),
        }));
}

/** The command of the button of a fault: switches it, or gives one that is on another value. */
export function faultCommand({ name, on, value, settings }: Fault, typed: string): Command {
    const isNumber = settings.length === 0 && Number.isFinite(Number(typed));
    return {
        command: 'fault',
        name,
        ...(typed === '' ? {} : { value: isNumber ? Number(typed) : typed }),
        enabled: !on || (typed !== '' && typed !== value),
    };
}
