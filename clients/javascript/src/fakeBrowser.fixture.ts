import type { Environment } from './connection.js';

/** A WebSocket whose other end is the test. */
export class FakeSocket {
    readyState = 0;
    readonly sent: string[] = [];
    onopen: (() => void) | null = null;
    onmessage: ((event: { data: string }) => void) | null = null;
    onclose: (() => void) | null = null;
    /** Called for each frame that the client sends. */
    onsend: (frame: string) => void = () => undefined;

    constructor(
        readonly address: string,
        readonly protocol: string,
    ) {}

    send(text: string): void {
        this.sent.push(text);
        this.onsend(text);
    }

    close(): void {
        this.readyState = 3;
        this.onclose?.();
    }

    open(): void {
        this.readyState = 1;
        this.onopen?.();
    }

    receive(frame: unknown): void {
        this.onmessage?.({ data: typeof frame === 'string' ? frame : JSON.stringify(frame) });
    }
}

/** A browser without a network: each connection is a `FakeSocket`. */
export class FakeBrowser implements Environment {
    readonly sockets: FakeSocket[] = [];
    /** The status of every HTTP request. */
    status = 0;
    /** Called for each new connection, before it is open. */
    onconnect: (socket: FakeSocket) => void = () => undefined;

    readonly open = (address: string, protocol: string): WebSocket => {
        const socket = new FakeSocket(address, protocol);
        this.sockets.push(socket);
        this.onconnect(socket);
        return socket as unknown as WebSocket;
    };
    readonly statusOf = (): Promise<number> => Promise.resolve(this.status);
    readonly random = (): number => 0.5;

    /** The newest connection. */
    get socket(): FakeSocket {
        const socket = this.sockets.at(-1);
        if (socket === undefined) {
            throw new Error('there was no connection');
        }
        return socket;
    }
}
