import { readFileSync, writeFileSync } from 'node:fs';
import { connect } from 'node:net';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';

import { chromium, type Browser, type Page } from 'playwright-core';
import { afterAll, beforeAll, expect, test } from 'vitest';

import { Host } from './host';
import { chromium as executablePath } from './programs';
import { wide } from './visit';

const document = fileURLToPath(new URL('../../docs/pages.md', import.meta.url));
const loads = Number(process.env['LOADS'] ?? 21);
const walks = Number(process.env['WALKS'] ?? 9);
const events = Number(process.env['EVENTS'] ?? 10_000);
const atOnce = 100;

const host = new Host();
let browser: Browser;
const times: string[] = [];
const memories: string[] = [];

beforeAll(async () => {
    await host.start();
    browser = await chromium.launch({ executablePath, chromiumSandbox: false, args: ['--disable-gpu'] });
});

afterAll(async () => {
    await browser.close();
    await host.stop();
});

function median(values: readonly number[]): number {
    const ordered = [...values].sort((one, other) => one - other);
    return ordered[Math.floor(ordered.length / 2)] ?? 0;
}

/** Median, least and most of times in milliseconds, as cells of a table. */
function figures(found: readonly number[]): string {
    return [median(found), Math.min(...found), Math.max(...found)].map((time) => `${time.toFixed(0)} ms`).join(' | ');
}

function openPage(): Promise<Page> {
    return browser.newPage({ viewport: wide, colorScheme: 'dark' });
}

interface Load {
    /** Milliseconds from the start of the navigation. */
    readonly firstPaint: number;
    readonly usable: number;
}

/** Records when the first setting is drawn with its value and can be focused. */
async function noteWhenUsable(page: Page): Promise<void> {
    await page.addInitScript(() => {
        const look = () => {
            const control = window.document.querySelector<HTMLElement>('[data-row="deviceName"] button');
            if (
                (control?.querySelector('.value')?.textContent ?? '') === '' ||
                control?.matches(':disabled') === true
            ) {
                requestAnimationFrame(look);
            } else {
                requestAnimationFrame(() => {
                    (window as unknown as Record<string, number>)['usableAfter'] = performance.now();
                });
            }
        };
        requestAnimationFrame(look);
    });
}

async function load(slowness: number): Promise<Load> {
    const page = await openPage();
    await noteWhenUsable(page);
    const session = await page.context().newCDPSession(page);
    await session.send('Emulation.setCPUThrottlingRate', { rate: slowness });
    await page.goto(host.page('/'));
    // The browser tells of the first paint a little later.
    await page.waitForFunction(
        () => 'usableAfter' in window && performance.getEntriesByName('first-contentful-paint').length > 0,
    );
    const measured = await page.evaluate(() => ({
        firstPaint: performance.getEntriesByName('first-contentful-paint')[0]?.startTime ?? 0,
        usable: (window as unknown as Record<string, number>)['usableAfter'] ?? 0,
    }));
    await page.locator('[data-row="deviceName"] button').focus();
    await page.close();
    return measured;
}

test.each([
    ['', 1],
    [', on a processor six times as slow', 6],
] as const)(
    'the time to the first usable paint%s',
    async (where, slowness) => {
        const measured: Load[] = [];
        for (let number = 0; number < loads; number += 1) {
            measured.push(await load(slowness));
        }
        const say = (name: string, found: readonly number[]) => times.push(`| ${name}${where} | ${figures(found)} |`);
        say(
            'first paint',
            measured.map(({ firstPaint }) => firstPaint),
        );
        say(
            'first usable paint',
            measured.map(({ usable }) => usable),
        );
    },
    300_000,
);

interface TraceEvent {
    readonly name: string;
    readonly ph: string;
    readonly pid: number;
    readonly tid: number;
    readonly tdur?: number;
    readonly args?: { readonly name?: string };
}

/** The longest task of the page's main thread in a trace: its processor time, in milliseconds. */
function longestTask(trace: Buffer): number {
    const { traceEvents } = JSON.parse(trace.toString()) as { traceEvents: TraceEvent[] };
    const mains = traceEvents.filter(({ args }) => args?.name === 'CrRendererMain');
    const tasks = traceEvents.filter(
        ({ name, ph, pid, tid }) =>
            ph === 'X' && name.endsWith('RunTask') && mains.some((main) => main.pid === pid && main.tid === tid),
    );
    return Math.max(...tasks.map(({ tdur = 0 }) => tdur / 1_000));
}

test.each([
    ['moves through a list', 'voice', ['ArrowDown', 'ArrowDown', 'ArrowDown', 'ArrowUp']],
    ['moves through the menu', '', ['ArrowDown', 'ArrowDown', 'ArrowDown', 'ArrowUp']],
] as const)(
    'the longest task while the focus %s, on a processor six times as slow',
    async (what, section, keys) => {
        const found: number[] = [];
        for (let number = 0; number < walks; number += 1) {
            const page = await openPage();
            await page.goto(`${host.page('/')}#${section}`);
            await page.locator('main [data-row] .value').first().waitFor();
            if (section !== '') {
                await page.locator('main [data-row] button').first().focus();
            }
            const session = await page.context().newCDPSession(page);
            await session.send('Emulation.setCPUThrottlingRate', { rate: 6 });
            await browser.startTracing(page, { categories: ['toplevel', 'disabled-by-default-devtools.timeline'] });
            for (const key of keys) {
                await page.keyboard.press(key);
            }
            found.push(longestTask(await browser.stopTracing()));
            await page.close();
        }
        times.push(`| longest task while the focus ${what}, on a processor six times as slow | ${figures(found)} |`);
    },
    300_000,
);

interface Memory {
    readonly heap: number;
    readonly nodes: number;
    readonly renderer: number;
}

/** The private memory of the largest renderer process, in bytes. */
async function largestRenderer(): Promise<number> {
    const session = await browser.newBrowserCDPSession();
    const { processInfo } = await session.send('SystemInfo.getProcessInfo');
    await session.detach();
    const own = processInfo
        .filter(({ type }) => type === 'renderer')
        .map(({ id }) => readFileSync(`/proc/${id}/smaps_rollup`, 'utf8'))
        .map((text) =>
            [...text.matchAll(/^Private_\w+:\s+(\d+) kB$/gm)].reduce(
                (sum, [, kilobytes]) => sum + Number(kilobytes),
                0,
            ),
        );
    return Math.max(...own) * 1024;
}

async function memoryOf(page: Page): Promise<Memory> {
    const session = await page.context().newCDPSession(page);
    await session.send('HeapProfiler.collectGarbage');
    const { usedSize } = await session.send('Runtime.getHeapUsage');
    const { nodes } = await session.send('Memory.getDOMCounters');
    await session.detach();
    return { heap: usedSize, nodes, renderer: await largestRenderer() };
}

/** Changes the device name `events` times. Ends when the host has handled the last of them. */
async function changeOften(): Promise<string> {
    const client = connect(host.socket());
    const received = createInterface(client)[Symbol.asyncIterator]();
    const started = Date.now();
    let name = '';
    for (let number = 0; number < events; number += atOnce) {
        for (let place = 0; place < atOnce; place += 1) {
            name = `Room ${number + place}`;
            const payload = { settingDBId: 'deviceName', to: name };
            client.write(`${JSON.stringify({ type: 24, timestamp: started + number + place, payload })}\n`);
        }
        client.write('{"type":7,"messageId":"done","payload":{"settings":["deviceName"]}}\n');
        for (;;) {
            const { value } = (await received.next()) as { value: string };
            if (value.includes('"messageId":"done"')) {
                break;
            }
        }
    }
    client.destroy();
    return name;
}

const kilobytes = (bytes: number) => `${Math.round(bytes / 1024).toLocaleString('en')} KiB`;

test.each([
    ['settings', '/', '.message'],
    ['simulated TV', '/device', '.device-list'],
] as const)(
    'the memory of %s',
    async (name, path, place) => {
        const page = await openPage();
        await page.goto(host.page(path));
        await page.locator(place).waitFor({ state: 'attached' });
        await page.waitForTimeout(1_000);
        const before = await memoryOf(page);
        const last = await changeOften();
        await expect.poll(() => page.locator(place).textContent(), { timeout: 60_000 }).toContain(last);
        await page.waitForTimeout(1_000);
        const after = await memoryOf(page);
        await page.close();
        const row = (what: string, figure: (memory: Memory) => string) =>
            memories.push(`| ${name}: ${what} | ${figure(before)} | ${figure(after)} |`);
        row('JavaScript heap', ({ heap }) => kilobytes(heap));
        row('nodes of the page', ({ nodes }) => nodes.toLocaleString('en'));
        row('its process, private memory', ({ renderer }) => kilobytes(renderer));
    },
    300_000,
);

test('the document shows them', () => {
    const version = browser.version().split('.')[0] ?? '';
    const table = [
        `Chromium ${version} without a window, 1920×1080, ${loads} loads with nothing kept from one to the next.`,
        '',
        '| time | median | least | most |',
        '|---|---|---|---|',
        ...times,
        '',
        '| after a collection of garbage | loaded | after ' + events.toLocaleString('en') + ' events |',
        '|---|---|---|',
        ...memories,
    ].join('\n');
    const text = readFileSync(document, 'utf8');
    const [start, end] = ['<!-- measurements: npm run document-measurements -->\n', '\n<!-- end of measurements -->'];
    expect(text).toContain(start);
    const [before = '', rest = ''] = text.split(start);
    const after = rest.slice(rest.indexOf(end));
    writeFileSync(document, `${before}${start}${table}${after}`);
});
