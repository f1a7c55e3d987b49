export interface ConnectionObserver {
    readonly opened: () => void;
    readonly received: (text: string) => void;
    /** The connection was lost or could not be made; the next attempt follows automatically. */
    readonly closed: () => void;
    /** The host refuses this address: its key is missing or old. */
    readonly unauthorized: () => void;
}

/** What a connection uses of the browser. */
export interface Environment {
    readonly open: (address: string, protocol: string) => WebSocket;
    /** The status of an HTTP request; 0 when the host cannot be reached. */
    readonly statusOf: (address: string) => Promise<number>;
    readonly random: () => number;
}

const minRetryDelay = 250;
const maxRetryDelay = 10_000;
/** How long an attempt to connect may take, in milliseconds. */
export const connectTimeout = 10_000;
const forbidden = 403;
/** `WebSocket.OPEN` */
const open = 1;

/** The delay before retry `attempt` (1, 2, 3 …), in milliseconds: twice as long each time, with jitter. */
export function retryDelay(attempt: number, random: number): number {
    const delay = Math.min(minRetryDelay * 2 ** (attempt - 1), maxRetryDelay);
    return Math.round(delay * (0.75 + random / 2));
}

const browser: Environment = {
    open: (address, protocol) => new WebSocket(address, protocol),
    statusOf: (address) =>
        fetch(address, { cache: 'no-store' }).then(
            ({ status }) => status,
            () => 0,
        ),
    random: Math.random,
};

/** A WebSocket to the host that reconnects with growing delays. */
export class Connection {
    #socket: WebSocket | null = null;
    #attempt = 0;
    #timer: ReturnType<typeof setTimeout> | undefined;
    #stopped = false;
    readonly #address: string;
    readonly #path: string;
    readonly #protocol: string;
    readonly #observer: ConnectionObserver;
    readonly #environment: Environment;

    /** `address` is that of the host for a browser, with the key unless a cookie has it. Call `start` next. */
    constructor(
        address: string,
        path: string,
        protocol: string,
        observer: ConnectionObserver,
        environment: Environment = browser,
    ) {
        this.#address = address;
        this.#path = path;
        this.#protocol = protocol;
        this.#observer = observer;
        this.#environment = environment;
    }

    start(): void {
        this.#connect();
    }

    stop(): void {
        this.#stopped = true;
        clearTimeout(this.#timer);
        this.#socket?.close();
    }

    /** Retries at once instead of after the delay. */
    retryNow(): void {
        if (!this.#stopped && this.#socket === null) {
            this.#attempt = 0;
            this.#connect();
        }
    }

    /** Replaces a connection that may be dead without having been closed. */
    renew(): void {
        if (this.#socket !== null) {
            this.#abandon(this.#socket);
        }
    }

    /** Returns: false when there is no connection. */
    send(text: string): boolean {
        if (this.#socket?.readyState !== open) {
            return false;
        }
        this.#socket.send(text);
        return true;
    }

    #connect(): void {
        clearTimeout(this.#timer);
        const { origin, search } = new URL(this.#address);
        const socket = this.#environment.open(origin.replace('http', 'ws') + this.#path + search, this.#protocol);
        this.#socket = socket;
        this.#timer = setTimeout(() => {
            this.#abandon(socket);
        }, connectTimeout);
        socket.onopen = () => {
            clearTimeout(this.#timer);
            this.#attempt = 0;
            this.#observer.opened();
        };
        socket.onmessage = ({ data }: MessageEvent<unknown>) => {
            this.#observer.received(String(data));
        };
        socket.onclose = () => {
            this.#lost(socket);
        };
    }

    #abandon(socket: WebSocket): void {
        socket.onopen = null;
        socket.onmessage = null;
        socket.onclose = null;
        socket.close();
        this.#lost(socket);
    }

    #lost(socket: WebSocket): void {
        if (this.#socket !== socket) {
            return;
        }
        clearTimeout(this.#timer);
        this.#socket = null;
        this.#observer.closed();
        if (this.#stopped) {
            return;
        }
        this.#attempt += 1;
        this.#timer = setTimeout(
            () => {
                this.#connect();
            },
            retryDelay(this.#attempt, this.#environment.random()),
        );
        void this.#environment.statusOf(this.#address).then((status) => {
            if (status === forbidden) {
                this.#observer.unauthorized();
            }
        });
    }
}
