import type { ChangeEvent, SettingKey } from 'settings-client';

/** How many changes the page knows. */
export const maxChanges = 100;

/** The newest changes since the host was started or somebody logged out, the newest first. Null until they were read. */
export type Changes = readonly ChangeEvent[] | null;

/** Keeps the recent changes current: reads them once, then adds each event. */
export class History {
    #changes: Changes = null;

    constructor(
        private readonly read: (limit: number) => Promise<ChangeEvent[] | null>,
        private readonly show: (changes: Changes) => void,
    ) {}

    /** To be called when changes may have been missed, or were erased. */
    async reload(): Promise<void> {
        const events = await this.read(maxChanges);
        if (events !== null) {
            this.#set(events.reverse());
        }
    }

    /** An event that comes before the reply to a reading is in the reply. */
    add(event: ChangeEvent): void {
        if (this.#changes !== null) {
            this.#set([event, ...this.#changes].slice(0, maxChanges));
        }
    }

    #set(changes: Changes): void {
        this.#changes = changes;
        this.show(changes);
    }
}

/** The last change of a setting, as far as it is known. */
export function lastChangeOf(changes: Changes, key: SettingKey): ChangeEvent | undefined {
    return changes?.find((change) => change.key === key);
}
