import type { ChangeEvent, SettingKey } from 'settings-client';

import type { TextKey } from '../i18n/en';

/** A change by somebody else. */
export interface ChangeMessage {
    readonly kind: 'change';
    readonly key: SettingKey;
    readonly value: string;
    /** Null when it changed at its owner, without an event. */
    readonly event: ChangeEvent | null;
}

/** Words of the page itself. */
export interface TextMessage {
    readonly kind: 'text';
    readonly text: TextKey;
    readonly values?: Readonly<Record<string, string>>;
}

export type Message = (ChangeMessage | TextMessage) & { readonly number: number };

/** How long a message is shown while no other waits, and the least when one does, in milliseconds. */
export const messageDuration = 6_000;
export const leastMessageDuration = 3_000;

function isSameSubject(one: ChangeMessage | TextMessage, other: ChangeMessage | TextMessage): boolean {
    return one.kind === 'change' && other.kind === 'change' && one.key === other.key;
}

/** A queue of messages: the first is shown. Of several changes of a setting that wait the last is told. */
export class MessageQueue {
    private waiting: readonly Message[] = [];
    private count = 0;
    private isShownLongEnough = false;
    private timers: ReturnType<typeof setTimeout>[] = [];

    constructor(private readonly changed: (messages: readonly Message[]) => void) {}

    add(message: ChangeMessage | TextMessage): void {
        this.count += 1;
        const [shown, ...others] = this.waiting;
        const kept = others.filter((other) => !isSameSubject(other, message));
        this.waiting = [...(shown === undefined ? [] : [shown]), ...kept, { ...message, number: this.count }];
        if (shown === undefined) {
            this.show();
        } else if (this.isShownLongEnough) {
            this.next();
        } else {
            this.changed(this.waiting);
        }
    }

    private next(): void {
        this.waiting = this.waiting.slice(1);
        this.show();
    }

    private show(): void {
        this.timers.forEach(clearTimeout);
        this.isShownLongEnough = false;
        this.changed(this.waiting);
        if (this.waiting.length === 0) {
            return;
        }
        const least = setTimeout(() => {
            this.isShownLongEnough = true;
            if (this.waiting.length > 1) {
                this.next();
            }
        }, leastMessageDuration);
        const most = setTimeout(() => {
            this.next();
        }, messageDuration);
        this.timers = [least, most];
    }
}
