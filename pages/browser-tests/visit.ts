import { chromium, type Browser, type BrowserContext, type Page } from 'playwright-core';
import { expect, inject } from 'vitest';

import { leastMessageDuration, messageDuration } from '../src/state/messages';
import type { Host } from './host';

export const wide = { width: 1920, height: 1080 };
export const small = { width: 1280, height: 720 };
export const phone = { width: 360, height: 740 };

/** What the console reports while the host is away, or refuses the page. */
export const hostIsAway = /WebSocket connection to .* failed|net::ERR_|Failed to fetch|status of 403/;

export interface VisitOptions {
    readonly path?: '/' | '/device' | '/gallery.html';
    readonly viewport?: { readonly width: number; readonly height: number };
    readonly hasTouch?: boolean;
    /** Console messages that the test causes on purpose. */
    readonly expected?: RegExp;
    /** Whether messages of success stay until the next, so that a slow machine sees them, too. */
    readonly messagesStay?: boolean;
    /** What to do before the page is opened. */
    readonly prepare?: (page: Page) => Promise<unknown>;
}

/** A tab of the browser. Tabs are reused, because opening one takes longer than most tests. */
interface Tab {
    readonly page: Page;
    /** Reports errors of the page to the visit that uses the tab. */
    complain: (text: string) => void;
}

let connected: Promise<Browser> | null = null;
const idleTabs = new Map<string, Tab[]>();

function browser(): Promise<Browser> {
    connected ??= chromium.connect(inject('browserAddress'));
    return connected;
}

function idleTabsFor(hasTouch: boolean, messagesStay: boolean): Tab[] {
    const kind = `${hasTouch} ${messagesStay}`;
    const tabs = idleTabs.get(kind) ?? [];
    idleTabs.set(kind, tabs);
    return tabs;
}

async function makeTab(hasTouch: boolean, messagesStay: boolean): Promise<Tab> {
    const connection = await browser();
    const context = await connection.newContext({ hasTouch, locale: 'en-US', timezoneId: 'UTC' });
    const complain = (text: string) => {
        tab.complain(text);
    };
    context.on('console', (message) => {
        if (message.type() === 'error' || message.type() === 'warning') {
            complain(message.text());
        }
    });
    context.on('request', (request) => {
        complain(`request ${request.url()}`);
    });
    context.on('weberror', (error) => {
        complain(error.error().message);
    });
    await context.exposeFunction('reportViolation', complain);
    await context.addInitScript(() => {
        document.addEventListener('securitypolicyviolation', (violation) => {
            const report = (window as unknown as Record<string, (text: string) => void>)['reportViolation'];
            report?.(`${violation.violatedDirective} refused ${violation.blockedURI}`);
        });
    });
    if (messagesStay) {
        await context.addInitScript(
            ([most, least]) => {
                const start = window.setTimeout.bind(window);
                window.setTimeout = ((act: () => void, delay?: number) =>
                    delay === most ? 0 : start(act, delay === least ? 0 : delay)) as typeof setTimeout;
            },
            [messageDuration, leastMessageDuration] as const,
        );
    }
    const page = await context.newPage();
    page.setDefaultTimeout(60_000);
    const tab: Tab = { page, complain: () => undefined };
    return tab;
}

/** Leaves the page and makes the tab available to other visits. */
async function release(tab: Tab, idle: Tab[]): Promise<void> {
    tab.complain = () => undefined;
    await tab.page.goto('about:blank');
    await Promise.all([tab.page.mouse.move(0, 0), tab.page.context().clearCookies()]);
    idle.push(tab);
}

/** Opens a page in a tab, runs `use`, and checks that the page reported no error and sent requests to the host only. */
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
    // The effects of `prepare` stay, so its tab is not reused.
    const isReusable = prepare === undefined;
    const idle = isReusable ? idleTabsFor(hasTouch, messagesStay) : [];
    const tab = idle.pop() ?? (await makeTab(hasTouch, messagesStay));
    const { page } = tab;
    const complaints: string[] = [];
    const origin = new URL(host.page('/')).origin;
    tab.complain = (text) => {
        if (!expected.test(text) && !text.startsWith(`request ${origin}/`)) {
            complaints.push(text);
        }
    };
    try {
        await page.setViewportSize(viewport);
        await page.emulateMedia({
            colorScheme: 'dark',
            reducedMotion: 'reduce',
            contrast: 'no-preference',
            forcedColors: 'none',
        });
        await prepare?.(page);
        await page.goto(host.page(path));
        await use(page, page.context());
        expect(complaints, 'complaints of the page').toEqual([]);
    } catch (error) {
        await page.context().close();
        throw error;
    }
    await (isReusable ? release(tab, idle) : page.context().close());
}

/** Checks that the page is not wider than the window. */
export async function expectNoSidewaysScroll(page: Page): Promise<void> {
    const { content, window } = await page.evaluate(() => ({
        content: document.documentElement.scrollWidth,
        window: document.documentElement.clientWidth,
    }));
    expect(content, 'width of the page').toBeLessThanOrEqual(window);
}
