import type { Command } from './commands';
import type { Frame } from './messages';

/** A fault of the simulator, as the host describes it. */
export interface Fault {
    readonly name: string;
    readonly description: string;
    readonly on: boolean;
    /** An unknown kind is a switch. */
    readonly kind: string;
    /** Whether it happens when it is switched on, and is never on. */
    readonly once?: boolean;
    /** Of one that is on; without it, milliseconds have a default. */
    readonly value?: string | number;
    readonly default?: number;
    /** The keys to choose from. */
    readonly settings?: readonly string[];
}

/** The faults in a reply; none in that of a host without them. */
export function faultsOf({ faults = [] }: Frame): readonly Fault[] {
    return faults as readonly Fault[];
}

/** The command of the button of a fault: switches it, or gives one that is on another value. */
export function faultCommand({ name, kind, on, value }: Fault, typed: string): Command {
    const isNumber = kind === 'milliseconds' && !Number.isNaN(Number(typed));
    return {
        command: 'fault',
        name,
        ...(typed && { value: isNumber ? Number(typed) : typed }),
        enabled: !on || (typed !== '' && typed !== String(value)),
    };
}
