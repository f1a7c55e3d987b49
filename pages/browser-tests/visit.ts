import { chromium, type Browser, type BrowserContext, type Page } from 'playwright-core';
import { expect, inject } from 'vitest';

import { messageDuration } from '../src/state/store';
import type { Host } from './host';

export const wide = { width: 1920, height: 1080 };
export const small = { width: 1280, height: 720 };
export const phone = { width: 360, height: 740 };

/** What the console says while a test keeps the host away, or while the host keeps the page out. */
export const hostIsAway = /WebSocket connection to .* failed|net::ERR_|Failed to fetch|status of 403/;

export interface VisitOptions {
    readonly path?: '/' | '/device';
    readonly viewport?: { readonly width: number; readonly height: number };
    readonly hasTouch?: boolean;
    /** Text that may appear in the console, because the test breaks something on purpose. */
    readonly expected?: RegExp;
    /** Whether messages that go after a while stay, so that a slow machine sees them, too. */
    readonly messagesStay?: boolean;
    /** What to do before the page is opened. */
    readonly prepare?: (page: Page) => Promise<unknown>;
}

let connected: Promise<Browser> | null = null;

function browser(): Promise<Browser> {
    connected ??= chromium.connect(inject('browserAddress'));
    return connected;
}

/** Opens a page in a browser context of its own, hands it to `use`, and insists that the page complained of nothing and asked nobody but the host. */
export async function visit(
    host: Host,
    use: (page: Page, context: BrowserContext) => Promise<void>,
    {
        path = '/',
        viewport = small,
        hasTouch = false,
        expected = /^$/,
        messagesStay = true,
        prepare,
    }: VisitOptions = {},
): Promise<void> {
    const context = await (
        await browser()
    ).newContext({
        viewport,
        hasTouch,
        locale: 'en-US',
        timezoneId: 'UTC',
        reducedMotion: 'reduce',
        colorScheme: 'dark',
    });
    const complaints: string[] = [];
    const complain = (text: string) => {
        if (!expected.test(text)) {
            complaints.push(text);
        }
    };
    context.on('console', (message) => {
        if (message.type() === 'error' || message.type() === 'warning') {
            complain(message.text());
        }
    });
    context.on('request', (request) => {
        if (new URL(request.url()).origin !== new URL(host.page('/')).origin) {
            complain(`asked for ${request.url()}`);
        }
    });
    context.on('weberror', (error) => {
        complain(error.error().message);
    });
    try {
        await context.exposeFunction('reportViolation', complain);
        await context.addInitScript(() => {
            document.addEventListener('securitypolicyviolation', (violation) => {
                const report = (window as unknown as Record<string, (text: string) => void>)['reportViolation'];
                report?.(`${violation.violatedDirective} refused ${violation.blockedURI}`);
            });
        });
        if (messagesStay) {
            await context.addInitScript((pause) => {
                const start = window.setTimeout.bind(window);
                window.setTimeout = ((act: () => void, delay?: number) =>
                    delay === pause ? 0 : start(act, delay)) as typeof setTimeout;
            }, messageDuration);
        }
        const page = await context.newPage();
        page.setDefaultTimeout(60_000);
        await prepare?.(page);
        await page.goto(host.page(path));
        await use(page, context);
        expect(complaints, 'complaints of the page').toEqual([]);
    } finally {
        await context.close();
    }
}

/** Insists that nothing is cut off or scrolled to at the sides. */
export async function expectNoSidewaysScroll(page: Page): Promise<void> {
    const { content, window } = await page.evaluate(() => ({
        content: document.documentElement.scrollWidth,
        window: document.documentElement.clientWidth,
    }));
    expect(content, 'width of the page').toBeLessThanOrEqual(window);
}
