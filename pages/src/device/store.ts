import type { Command } from './commands';
import { answerTime, type Exchange } from './exchanges';
import { faultsOf, type Fault } from './faults';
import { summary } from './format';
import { filterOf, fragmentOf, type Filter } from './filter';
import { MessageLog, type LogView } from './messageLog';
import { isRecord, type Trace } from './messages';
import { DeviceSession } from './session';
import { sayRequest, wordsOf } from './words';

export type DeviceState = Readonly<Record<string, string>>;
export type ConnectionState = 'connecting' | 'connected' | 'lost' | 'unauthorized';

export interface Result {
    readonly words: string;
    readonly refused: boolean;
}

/** Everything that the page shows but the messages. */
export interface View {
    readonly connection: ConnectionState;
    /** The last known state of the device; null until it is known. */
    readonly state: DeviceState | null;
    /** Empty with a host that has none. */
    readonly faults: readonly Fault[];
    /** What came of the last command that a person gave. */
    readonly result: Result | null;
    readonly filter: Filter;
    /** Null while the list follows the newest. */
    readonly chosen: Exchange | null;
    readonly showsFrame: boolean;
    readonly copied: string;
}

/** How long traces are collected before the state is requested once, in milliseconds. */
export const refreshDelay = 100;

/** The state of the page and what changes it. The host does not trace `show` and `faults`: a refresh would cause the next. */
export class DeviceStore {
    readonly session: DeviceSession;
    readonly #log = new MessageLog();
    #shown: View;
    #refreshTimer: ReturnType<typeof setTimeout> | undefined;
    #answerTimer: ReturnType<typeof setTimeout> | undefined;
    /** A host without faults is asked once: it traces what it does not know. */
    #asksForFaults = true;

    constructor(
        send: (text: string) => void,
        private readonly changed: () => void,
    ) {
        this.session = new DeviceSession(send, (trace) => {
            this.#traced(trace);
        });
        this.#shown = {
            connection: 'connecting',
            state: null,
            faults: [],
            result: null,
            filter: filterOf(location.hash),
            chosen: null,
            showsFrame: false,
            copied: '',
        };
    }

    get view(): View {
        return this.#shown;
    }

    get messages(): LogView {
        return this.#log.view();
    }

    show(part: Partial<View>): void {
        this.#shown = { ...this.#shown, ...part };
        this.changed();
    }

    /** Keeps the filter in the address, so that a reload and a shared address have it. */
    filter(filter: Filter): void {
        history.replaceState(null, '', location.pathname + location.search + fragmentOf(filter));
        this.show({ filter });
    }

    /** Takes the filter of an address that was typed or pasted. */
    readAddress(): void {
        this.show({ filter: filterOf(location.hash) });
    }

    pause(paused: boolean): void {
        this.#log.setPaused(paused);
        this.changed();
    }

    clear(): void {
        this.#log.clear();
        this.show({ chosen: null, showsFrame: false });
    }

    opened(): void {
        this.#log.connected();
        this.session.opened();
        this.#asksForFaults = true;
        this.#refresh();
        this.session.request({ command: 'trace', enabled: true }, () => undefined);
        this.show({ connection: 'connected' });
    }

    closed(): void {
        this.show({ connection: 'lost' });
        this.session.closed();
        clearTimeout(this.#refreshTimer);
        this.#refreshTimer = undefined;
    }

    run(command: Command): void {
        this.session.request(command, (reply) => {
            const words = summary(`${sayRequest(command)}: ${wordsOf(reply, 'out')}`);
            this.show({ result: { words, refused: !('ok' in reply) } });
            this.#refresh();
        });
    }

    #traced(trace: Trace): void {
        this.#log.add(trace);
        this.changed();
        this.#refreshTimer ??= setTimeout(() => {
            this.#refresh();
        }, refreshDelay);
        // Draws again when the last answer should have come.
        clearTimeout(this.#answerTimer);
        this.#answerTimer = setTimeout(this.changed, answerTime);
    }

    #refresh(): void {
        clearTimeout(this.#refreshTimer);
        this.#refreshTimer = undefined;
        this.session.request({ command: 'show' }, ({ device }) => {
            if (isRecord(device)) {
                this.show({
                    state: Object.fromEntries(Object.entries(device).map(([fact, value]) => [fact, String(value)])),
                });
            }
        });
        if (this.#asksForFaults) {
            this.session.request({ command: 'faults' }, (reply) => {
                if (this.#shown.connection === 'connected') {
                    this.#asksForFaults = 'faults' in reply;
                    this.show({ faults: faultsOf(reply) });
                }
            });
        }
    }
}
