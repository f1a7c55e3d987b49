import type { ChangeEvent, SettingKey } from 'settings-client';

/** The last change of each setting that the host still knows. */
export type LastChanges = Readonly<Partial<Record<SettingKey, ChangeEvent>>>;

/** How many events of the host's history are read. */
export const lastChangesLimit = 100;

/** `events` have the oldest first. */
export function lastChangesOf(events: readonly ChangeEvent[]): LastChanges {
    return Object.fromEntries(events.map((event) => [event.key, event]));
}
