import type { ChangeEvent, SettingKey } from 'settings-client';

/** A change by somebody else. */
export interface Message {
    readonly key: SettingKey;
    readonly value: string;
    /** Null when it changed at its owner, without an event. */
    readonly event: ChangeEvent | null;
}

/** How long a message is shown while no other waits, and the least when one does, in milliseconds. */
export const messageDuration = 6_000;
export const leastMessageDuration = 3_000;

/** A queue of messages: the first is shown. Of several changes of a setting that wait the last is told. */
export class MessageQueue {
    #waiting: readonly Message[] = [];
    #isShownLongEnough = false;
    #timers: ReturnType<typeof setTimeout>[] = [];

    constructor(private readonly changed: (messages: readonly Message[]) => void) {}

    add(message: Message): void {
        const [shown, ...others] = this.#waiting;
        const kept = others.filter(({ key }) => key !== message.key);
        this.#waiting = [...(shown === undefined ? [] : [shown]), ...kept, message];
        if (shown === undefined) {
            this.#show();
        } else if (this.#isShownLongEnough) {
            this.#next();
        } else {
            this.changed(this.#waiting);
        }
    }

    #next(): void {
        this.#waiting = this.#waiting.slice(1);
        this.#show();
    }

    #show(): void {
        this.#timers.forEach(clearTimeout);
        this.#isShownLongEnough = false;
        this.changed(this.#waiting);
        if (this.#waiting.length === 0) {
            return;
        }
        const least = setTimeout(() => {
            this.#isShownLongEnough = true;
            if (this.#waiting.length > 1) {
                this.#next();
            }
        }, leastMessageDuration);
        const most = setTimeout(() => {
            this.#next();
        }, messageDuration);
        this.#timers = [least, most];
    }
}
