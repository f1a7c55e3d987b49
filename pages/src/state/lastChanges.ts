import type { ChangeEvent, SettingKey } from 'settings-client';

/** Who changed a setting, and when. */
export interface LastChange {
    /** `here`: this page. */
    readonly origin: ChangeEvent['origin'] | 'here';
    readonly client: string | null;
    readonly timestamp: number;
}
export type LastChanges = Readonly<Partial<Record<SettingKey, LastChange>>>;

/** How many events of the host's history are read. */
export const lastChangesLimit = 100;

/** The last change of each setting; `events` have the oldest first. */
export function lastChangesOf(events: readonly ChangeEvent[]): LastChanges {
    return Object.fromEntries(events.map((event) => [event.key, event]));
}

export function ownChange(): LastChange {
    return { origin: 'here', client: null, timestamp: Date.now() };
}
