import { webSocketAddress } from './address';

export interface ConnectionEvents {
    readonly opened: () => void;
    readonly received: (text: string) => void;
    /** The connection is gone, or could not be made; another attempt follows by itself. */
    readonly closed: () => void;
    /** The host is there but does not let this page in: a new address is needed. */
    readonly lockedOut?: () => void;
}

/** What a connection needs of its surroundings; tests give their own. */
export interface Surroundings {
    readonly open: (address: string, protocol: string) => WebSocket;
    /** The status of the host's answer to a plain request for this page; 0 when there is none. */
    readonly statusOfPage: () => Promise<number>;
    readonly random: () => number;
}

const firstPause = 250;
const longestPause = 10_000;
/** So long may an attempt take, in milliseconds, before the next one. */
export const attemptPatience = 10_000;
const forbidden = 403;
/** The state of a WebSocket that takes frames. */
const open = 1;

/** How long to wait before attempt `attempt` (1, 2, 3 …), in milliseconds: twice as long each time, with some chance. */
export function pauseBefore(attempt: number, random: number): number {
    const pause = Math.min(firstPause * 2 ** (attempt - 1), longestPause);
    return Math.round(pause * (0.75 + random / 2));
}

const browser: Surroundings = {
    open: (address, protocol) => new WebSocket(address, protocol),
    statusOfPage: () =>
        fetch(location.pathname, { cache: 'no-store' }).then(
            (answer) => answer.status,
            () => 0,
        ),
    random: Math.random,
};

/** A WebSocket to the host that is made again, after growing pauses, whenever it is lost. */
export class Connection {
    private socket: WebSocket | null = null;
    private attempt = 0;
    private timer: ReturnType<typeof setTimeout> | null = null;
    private stopped = true;

    constructor(
        private readonly path: string,
        private readonly protocol: string,
        private readonly events: ConnectionEvents,
        private readonly surroundings: Surroundings = browser,
    ) {}

    start(): void {
        this.stopped = false;
        this.connect();
    }

    stop(): void {
        this.stopped = true;
        this.cancelTimer();
        this.socket?.close();
    }

    /** Tries again at once instead of after the pause. */
    retryNow(): void {
        if (!this.stopped && this.socket === null) {
            this.attempt = 0;
            this.connect();
        }
    }

    /** Gives the connection up, which may be dead without having been closed, and makes another. */
    renew(): void {
        if (this.socket !== null) {
            this.abandon(this.socket);
        }
    }

    /** Returns: false when there is no connection. */
    send(text: string): boolean {
        if (this.socket?.readyState !== open) {
            return false;
        }
        this.socket.send(text);
        return true;
    }

    private connect(): void {
        this.cancelTimer();
        const socket = this.surroundings.open(webSocketAddress(this.path), this.protocol);
        this.socket = socket;
        this.timer = setTimeout(() => {
            this.abandon(socket);
        }, attemptPatience);
        socket.onopen = () => {
            this.cancelTimer();
            this.attempt = 0;
            this.events.opened();
        };
        socket.onmessage = ({ data }: MessageEvent<unknown>) => {
            this.events.received(String(data));
        };
        socket.onclose = () => {
            this.lost(socket);
        };
    }

    private abandon(socket: WebSocket): void {
        socket.onopen = null;
        socket.onmessage = null;
        socket.onclose = null;
        socket.close();
        this.lost(socket);
    }

    private lost(socket: WebSocket): void {
        if (this.socket !== socket) {
            return;
        }
        this.cancelTimer();
        this.socket = null;
        this.events.closed();
        if (this.stopped) {
            return;
        }
        this.attempt += 1;
        this.timer = setTimeout(
            () => {
                this.connect();
            },
            pauseBefore(this.attempt, this.surroundings.random()),
        );
        void this.findOutWhetherLockedOut();
    }

    private async findOutWhetherLockedOut(): Promise<void> {
        if (this.events.lockedOut !== undefined && (await this.surroundings.statusOfPage()) === forbidden) {
            this.events.lockedOut();
        }
    }

    private cancelTimer(): void {
        if (this.timer !== null) {
            clearTimeout(this.timer);
            this.timer = null;
        }
    }
}
