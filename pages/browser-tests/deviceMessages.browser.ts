import type { Page } from 'playwright-core';
import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { expectArrowsLead } from './arrows';
import { hostOfFile } from './host';
import { expectNoSidewaysScroll, hostIsAway, phone, small, visit, wide, type VisitOptions } from './visit';

const host = hostOfFile();

async function visitDevice(use: (page: Page) => Promise<void>, options: VisitOptions = {}): Promise<void> {
    await visit(
        host,
        async (page) => {
            await page.getByText('● Connected').waitFor();
            await use(page);
        },
        { path: '/device', ...options },
    );
}

function lines(page: Page) {
    return page.getByRole('listbox', { name: 'Messages' }).getByRole('option');
}

function line(page: Page, text: string | RegExp) {
    return lines(page).filter({ hasText: text });
}

/** Presses Tab until `name` has the focus. */
async function tabTo(page: Page, name: string): Promise<void> {
    for (let presses = 0; presses < 40; presses += 1) {
        await page.keyboard.press('Tab');
        const focused = await page.evaluate(() => {
            const element = document.activeElement;
            const label = element instanceof HTMLInputElement ? element.labels?.[0]?.innerText : element?.textContent;
            return element?.getAttribute('aria-label') ?? label ?? '';
        });
        if (focused.startsWith(name)) {
            return;
        }
    }
    expect.fail(`${name} is not reached by Tab`);
}

async function expectReport(page: Page, report: string): Promise<void> {
    await page.locator('.device-result', { hasText: report }).waitFor();
}

async function expectFact(page: Page, fact: string, value: string): Promise<void> {
    await page.locator('.device-state > div', { hasText: fact }).getByText(value, { exact: true }).waitFor();
}

test('every command works by keys alone and is shown in the state', async () => {
    await visitDevice(async (page) => {
        for (const [label, fact, on, off] of [
            ['Hands-free', 'currentHandsFreeStatus', 'on', 'off'],
            ['Captions', 'captionsEnabled', 'true', 'false'],
            ['Do-not-disturb', 'doNotDisturbEnabled', 'true', 'false'],
        ] as const) {
            await tabTo(page, label);
            await page.keyboard.press('Enter');
            await expectFact(page, fact, on);
            await page.keyboard.press('Space');
            await expectFact(page, fact, off);
        }
        for (const [label, typed, fact, value] of [
            ['Locale', 'fr-FR', 'locales', '["fr-FR"]'],
            ['Locales', 'ja-JP, de-DE', 'locales', '["ja-JP","de-DE"]'],
            ['Time zone', 'Asia/Tokyo', 'timezone', 'Asia/Tokyo'],
        ] as const) {
            await tabTo(page, label);
            await page.keyboard.type(typed);
            await page.keyboard.press('Enter');
            await expectFact(page, fact, value);
        }
        await tabTo(page, 'Setting');
        await page.keyboard.type('deviceName');
        await page.keyboard.press('Tab');
        await page.keyboard.type('Den');
        await page.keyboard.press('Enter');
        await expectReport(page, '✓ Done: {"command":"setting","key":"deviceName","value":"Den"}');
    });
    expect(await host.control('get', 'deviceName', 'orliaLocale', 'timezone')).toBe(
        'deviceName=Den\norliaLocale=["ja-JP","de-DE"]\ntimezone=Asia/Tokyo\n',
    );
});

test.each([
    ['a wide screen', wide],
    ['a small screen', small],
    ['a phone', phone],
])('on %s every arrow leads to what is drawn there, and arrows reach every control', async (name, viewport) => {
    await visitDevice(
        async (page) => {
            const zones = ['header', '.device-side', '.device-messages'];
            await page.keyboard.press('ArrowDown');
            await page.locator('[data-row="switches"] :focus').waitFor();
            await expectArrowsLead(page, name, { zones, from: zones });
        },
        { viewport },
    );
});

test('arrows move within a text, the list and a message before they leave it; Enter opens a choice', async () => {
    await visitDevice(
        async (page) => {
            const focused = () =>
                page.evaluate(() => document.activeElement?.closest<HTMLElement>('[data-row]')?.dataset['row']);
            await page.getByLabel('Value', { exact: true }).fill('ab');
            await page.keyboard.press('ArrowLeft');
            await page.keyboard.press('ArrowLeft');
            expect(await page.evaluate(() => document.activeElement?.getAttribute('placeholder'))).toBe('Den');
            await page.keyboard.press('ArrowLeft');
            expect(await page.evaluate(() => document.activeElement?.getAttribute('placeholder'))).toBe('deviceName');

            await host.control('device', 'setting', 'deviceName', Array.from({ length: 200 }, String).join(' '));
            await lines(page).nth(2).waitFor();
            await expect.poll(() => lines(page).count()).toBe(3);
            const list = page.getByRole('listbox', { name: 'Messages' });
            await list.focus();
            const chosen: (string | null)[] = [];
            for (const key of ['ArrowUp', 'ArrowUp', 'ArrowUp', 'ArrowUp']) {
                await page.keyboard.press(key);
                chosen.push(`${await focused()} ${await list.getAttribute('aria-activedescendant')}`);
            }
            expect(chosen.map((line) => line?.replace(/message-/, ''))).toEqual([
                'list 3',
                'list 2',
                'list 1',
                'tools 1',
            ]);
            await list.focus();
            await line(page, '"command"').click();
            await page.keyboard.press('End');
            await page.keyboard.press('ArrowUp');
            await page.keyboard.press('ArrowUp');
            await page.keyboard.press('ArrowDown');
            await page.keyboard.press('ArrowDown');
            await page.keyboard.press('ArrowDown');
            expect(await focused()).toBe('detail');
            await page.keyboard.press('ArrowUp');
            expect(await focused()).toBe('list');

            const type = page.getByLabel('Type');
            await type.focus();
            await page.keyboard.press('Enter');
            await expect.poll(() => type.evaluate((choice) => choice.matches(':open'))).toBe(true);
            await page.keyboard.press('ArrowDown');
            await page.keyboard.press('Enter');
            await expect.poll(() => type.inputValue()).not.toBe('');
            expect(await focused()).toBe('filter');
        },
        { viewport: wide },
    );
});

test('a held Enter acts once', async () => {
    await visitDevice(async (page) => {
        await page.getByRole('switch', { name: 'Captions' }).focus();
        for (let times = 0; times < 8; times += 1) {
            await page.keyboard.down('Enter');
        }
        await page.keyboard.up('Enter');
        await expectReport(page, '"captions"');
        await host.control('device', 'do-not-disturb', 'on');
        await line(page, '"doNotDisturb"').waitFor();
        expect(await line(page, '"captions"').count()).toBe(1);
    });
    await host.control('device', 'captions', 'off');
    await host.control('device', 'do-not-disturb', 'off');
});

test('the error of a command is shown', async () => {
    await visitDevice(async (page) => {
        await host.control('device', 'timezone', 'Asia/Tokyo');
        await page.getByRole('button', { name: 'Change time zone' }).click();
        await expectReport(page, '✗ bad-argument: "value" must be a time zone');
        await expectFact(page, 'timezone', 'Asia/Tokyo');
        await page.getByRole('button', { name: 'Change locale', exact: true }).click();
        await expectReport(page, '✗ bad-argument: "value" must be a locale');
        await page.getByRole('button', { name: 'Change locales' }).click();
        await expectReport(page, '✗ bad-argument: "values" must be an array of locales');
        await page.getByLabel('Setting', { exact: true }).fill('orliaLocale');
        await page.getByLabel('Value', { exact: true }).fill('{}');
        await page.getByRole('button', { name: 'Report setting' }).click();
        await expectReport(page, '✗ not-passed-on: the value must be a JSON array of at most 32 levels');
    });
});

test('the result of a report is shown: done, no change, or an error', async () => {
    const answers = [
        '{"ok":true}',
        '{"ok":true,"changed":false}',
        '{"error":{"code":"read-only","message":"nothing changed"}}',
    ];
    await visitDevice(
        async (page) => {
            await page.getByLabel('Setting', { exact: true }).fill('captionsEnabled');
            for (const report of ['✓ Done: {', '= No change: {', '✗ read-only: nothing changed']) {
                await page.getByRole('button', { name: 'Report setting' }).click();
                await expectReport(page, report);
            }
        },
        {
            prepare: (page) =>
                page.routeWebSocket(/device/, (socket) => {
                    socket.onMessage((message) => {
                        const isReport = message.toString().includes('"setting"');
                        socket.send((isReport ? answers.shift() : null) ?? '{"ok":true}');
                    });
                }),
        },
    );
});

test('changes by others are shown', async () => {
    await visitDevice(async (page) => {
        await expectFact(page, 'timezone', 'Asia/Tokyo');
        await host.control('device', 'timezone', 'Europe/Rome');
        await page.locator('.device-state').getByText('Europe/Rome').waitFor();
        await host.control('set', 'timezone', 'Europe/Oslo');
        await page.locator('.device-state').getByText('Europe/Oslo').waitFor();
    });
});

test('frames of every listener are listed in order, and the newest or the chosen one is shown in full', async () => {
    await visitDevice(async (page) => {
        await host.control('set', 'deviceName', 'Cellar');
        await host.control('device', 'captions', 'on');
        await line(page, '{"ok":true}').waitFor();
        const texts = (await lines(page).allInnerTexts()).map((text) => text.replace(/\s+/g, ' '));
        expect(texts.map((text) => / (→ in|← out) .*?(?= \{)/.exec(text)?.[0].replace(/\d+/, 'N').trim())).toEqual([
            '→ in socket N other',
            '← out socket N other',
            '→ in socket N SetSettings',
            '← out all event',
            '← out socket N SetSettings',
            '→ in socket N IsOrliaSelectedVA',
            '← out socket N IsOrliaSelectedVA',
            '→ in device N command',
            '← out device N reply',
        ]);
        await page.getByRole('listbox', { name: 'Messages' }).focus();
        await page.keyboard.press('Home');
        await page.getByRole('option', { selected: true }).filter({ hasText: 'hello' }).waitFor();
        const detail = page.getByRole('region', { name: 'The message in full' });
        await line(page, 'SetSettings').first().click();
        await expect
            .poll(() => detail.innerText())
            .toMatch(/^\{\n {2}"type": 24,\n[^]*"settingDBId": "deviceName",\n[^]*\n\}$/);
        await page.keyboard.press('Escape');
        await detail.getByText('"ok"').waitFor();
    });
});

test('the list is filtered by text, direction, listener and type', async () => {
    await visitDevice(async (page) => {
        await host.control('device', 'captions', 'off');
        await host.control('set', 'deviceName', 'Porch');
        await line(page, /← out.*Porch/)
            .last()
            .waitFor();
        const kinds = async () => [
            ...new Set(await lines(page).evaluateAll((all) => all.map((one) => one.dataset['kind']))),
        ];
        await page.getByLabel('Text').fill('PORCH');
        await expect.poll(async () => (await kinds()).sort()).toEqual(['SetSettings', 'event']);
        await page.getByLabel('Type').selectOption('event');
        await expect.poll(kinds).toEqual(['event']);
        await page.getByLabel('Type').selectOption('all');
        await page.getByLabel('Text').fill('');
        await page.getByLabel('Listener').selectOption('device');
        await expect.poll(kinds).toEqual(['command', 'reply']);
        await page.getByLabel('Direction').selectOption('in');
        await expect.poll(kinds).toEqual(['command']);
        await page.getByLabel('Text').fill('nowhere');
        await page.getByText('No messages').waitFor();
    });
});

test('a pause counts new messages and shows them afterwards; clearing empties the list', async () => {
    await visitDevice(async (page) => {
        await host.control('device', 'captions', 'off');
        await line(page, '"enabled":false').waitFor();
        const pause = page.getByRole('button', { name: 'Pause' });
        await pause.click();
        await host.control('device', 'setting', 'deviceName', 'while paused');
        await page.getByText(/^Paused: [1-9]\d* new$/).waitFor();
        expect(await line(page, 'while paused').count()).toBe(0);
        await pause.click();
        await line(page, 'while paused').first().waitFor();
        await page.getByRole('button', { name: 'Clear' }).click();
        await page.getByText('0 of 0').waitFor();
        expect(await lines(page).count()).toBe(0);
    });
});

test('only the newest 200 messages are kept', async () => {
    await visitDevice(async (page) => {
        await page.evaluate(
            () =>
                new Promise((resolve, reject) => {
                    const socket = new WebSocket(`ws://${location.host}/settings`, 'settings.v1');
                    let answers = 0;
                    socket.onerror = reject;
                    socket.onmessage = () => {
                        answers += 1;
                        if (answers === 150) {
                            socket.close();
                            resolve(null);
                        }
                    };
                    socket.onopen = () => {
                        for (let number = 1; number <= 150; number += 1) {
                            socket.send(`{"type":18,"messageId":"${number}"}`);
                        }
                    };
                }),
        );
        await page.getByText('200 of 200').waitFor();
        await line(page, /← out.*"messageId":"150"/).waitFor();
        expect(await line(page, '"messageId":"50"').count()).toBe(0);
        expect(await line(page, '"messageId":"51"').count()).toBe(2);
    });
});

test('a message and the list are copied as they were', async () => {
    await visit(
        host,
        async (page, context) => {
            await context.grantPermissions(['clipboard-read', 'clipboard-write']);
            await page.getByText('● Connected').waitFor();
            await host.control('device', 'captions', 'on');
            await line(page, '{"ok":true}').waitFor();
            await line(page, '"captions"').click();
            await page.getByRole('button', { name: 'Copy message' }).click();
            await page.getByText('Copied the message.').waitFor();
            expect(await page.evaluate(() => navigator.clipboard.readText())).toBe(
                '{"command":"captions","enabled":true}',
            );
            await page.getByRole('button', { name: 'Copy list' }).click();
            await page.getByText(/^Copied \d+ messages\.$/).waitFor();
            const lines = (await page.evaluate(() => navigator.clipboard.readText())).trimEnd().split('\n');
            expect(lines[0]).toMatch(/^\d\d:\d\d:\d\d\.\d{3} in device \d+ \{"command":"captions","enabled":true\}$/);
        },
        { path: '/device' },
    );
});

test('hostile text is shown as text', async () => {
    await visitDevice(async (page) => {
        await host.control('device', 'setting', 'deviceName', '<img src=x onerror=alert(1)>\u202e');
        await line(page, '<img src=x onerror=alert(1)>\\u202e').first().waitFor();
        await host.control('device', 'timezone', '<b>\u202enowhere\u0007');
        await page.locator('.device-state').getByText('<b>\\u202enowhere\\u0007').waitFor();
        expect(await page.locator('.device img, .device b').count()).toBe(0);
        expect(await page.evaluate(() => document.body.innerText.includes('\u202e'))).toBe(false);
    });
});

test('after the host was killed the page reconnects, reads the state again and keeps the list', async () => {
    await visitDevice(
        async (page) => {
            await host.control('device', 'timezone', 'Europe/Madrid');
            await expectFact(page, 'timezone', 'Europe/Madrid');
            await host.kill();
            await page.getByText('○ Disconnected').waitFor();
            await page.getByRole('switch', { name: 'Captions' }).click();
            await expectReport(page, '✗ no-connection');
            await host.resume();
            await host.control('device', 'timezone', 'Europe/Lisbon');
            await page.getByText('● Connected').waitFor();
            await expectFact(page, 'timezone', 'Europe/Lisbon');
            await line(page, 'Europe/Madrid').first().waitFor();
            await page.getByRole('switch', { name: 'Captions' }).click();
            await expectReport(page, '✓ Done');
        },
        { expected: hostIsAway },
    );
});

test('a page that is no longer authorized says how to get a new address', async () => {
    await visitDevice(
        async (page) => {
            await host.resumeAsNew();
            await page.getByText('Not authorized').waitFor();
            await expectAccessible(page, 'the device page that is locked out');
        },
        { expected: hostIsAway },
    );
});

test('axe-core finds nothing on the page, wide and narrow, empty and with messages, and nothing scrolls sideways', async () => {
    for (const viewport of [undefined, phone]) {
        await visitDevice(async (page) => {
            await expectAccessible(page, 'the empty device page');
            await host.control('device', 'setting', 'deviceName', 'x'.repeat(5_000));
            await line(page, '"setting"').first().click();
            await page.getByRole('button', { name: 'Pause' }).click();
            await page.getByRole('button', { name: 'Change locale', exact: true }).click();
            await expectReport(page, '✗');
            await expectAccessible(page, 'the device page with messages');
            await expectNoSidewaysScroll(page);
        }, viewport && { viewport });
    }
});
