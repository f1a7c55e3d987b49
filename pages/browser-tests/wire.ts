import type { Page } from 'playwright-core';

export type Frame = Record<string, unknown>;

/** What to do with the frames between a page and the host. */
export interface Wire {
    /** Runs before a connection is made. */
    readonly connect?: () => Promise<unknown>;
    readonly toHost?: (frame: Frame) => Frame;
    readonly toPage?: (frame: Frame) => Frame;
}

/** Passes the frames of a page that is not open yet through `wire`. Returns: a function that cuts the connection. */
export async function tap(page: Page, { connect, toHost = same, toPage = same }: Wire): Promise<() => Promise<void>> {
    let cut = () => Promise.resolve();
    await page.routeWebSocket('**/settings', async (socket) => {
        await connect?.();
        const host = socket.connectToServer();
        socket.onMessage((text) => {
            host.send(JSON.stringify(toHost(JSON.parse(text.toString()) as Frame)));
        });
        host.onMessage((text) => {
            socket.send(JSON.stringify(toPage(JSON.parse(text.toString()) as Frame)));
        });
        cut = () => socket.close({ code: 1001 });
    });
    return () => cut();
}

function same(frame: Frame): Frame {
    return frame;
}
