import type { Page } from 'playwright-core';
import { expect, test } from 'vitest';

import { replyTimeout } from '../../clients/javascript/src/client';
import { hostOfEachTest } from './host';
import {
    enterSection,
    expectFocus,
    expectStatus,
    expectValue,
    focus,
    goDownTo,
    press,
    row,
    typeOver,
    visitSettings,
} from './settings';
import { hostIsAway } from './visit';

const host = hostOfEachTest();

function announcement(page: Page, text: string) {
    return page.locator('.message', { hasText: text });
}

function setDeviceName(to: string) {
    return { type: 24, timestamp: Date.now(), payload: { settingDBId: 'deviceName', to } };
}

async function startEditing(page: Page, text: string): Promise<void> {
    await press(page, 'ArrowRight', 'Enter');
    await typeOver(page, text);
}

test('a change by a program is shown and announced with its origin, and does not move the focus', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'device');
        await press(page, 'ArrowDown');
        await host.control('set', 'deviceName', 'Attic');
        await row(page, 'deviceName').getByText('Attic').waitFor();
        await announcement(page, 'Device name set to Attic by settingsctl').waitFor();
        await host.control('set', 'friendlyName', 'Telly');
        await row(page, 'friendlyName').getByText('Telly').waitFor();
        await expectFocus(page, 'friendlyName');
    });
});

test('a change by a client with a name is announced with the name', async () => {
    await visitSettings(host, async (page) => {
        await host.send({ messageId: 'h1', hello: { client: 'kitchen-remote' } }, setDeviceName('Attic'));
        await announcement(page, 'Device name set to Attic by kitchen-remote').waitFor();
    });
});

test('changes at the TV are shown and announced', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'captions');
        await host.control('device', 'captions', 'on');
        await page.locator('main').getByText('On', { exact: true }).waitFor();
        await announcement(page, 'Captions turned on by the TV').waitFor();
        await host.control('device', 'do-not-disturb', 'on');
        await announcement(page, 'Do not disturb turned on by the TV').waitFor();
        await enterSection(page, 'voice');
        await host.control('device', 'handsfree', 'on');
        await page.getByRole('switch', { name: 'Hands-free', checked: true }).waitFor();
        await announcement(page, 'Hands-free turned on by the TV').waitFor();
        await expectFocus(page, 'handsFreeEnabled');
    });
});

test('the language of the page follows the primary locale, and the focus stays', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'voice');
        await goDownTo(page, 'handsFreeAlwaysOnEnabled');
        for (const [locale, title] of [
            ['fr-CA', 'Voix'],
            ['ja-JP', '音声'],
            ['it-IT', 'Voice'],
        ] as const) {
            await host.control('device', 'locale', locale);
            await page.locator('main h2', { hasText: title }).waitFor();
            await expectFocus(page, 'handsFreeAlwaysOnEnabled');
        }
    });
});

test('a change is shown on other pages, and announced only there', async () => {
    await visitSettings(host, async (page) => {
        await visitSettings(host, async (other) => {
            await startEditing(page, 'Den');
            await press(page, 'Enter');
            await expectStatus(page, 'deviceName', 'accepted', 'Saved');
            await row(other, 'deviceName').getByText('Den').waitFor();
            await announcement(other, 'Device name set to Den by settings page (Linux)').waitFor();
            expect(await page.locator('.message').innerText()).toBe('');
        });
    });
});

test('accepted, unchanged and refused differ in words, sign and colour', async () => {
    await visitSettings(host, async (page) => {
        const looks: (string | null)[][] = [];
        const look = async (kind: string, words: string) => {
            await expectStatus(page, 'deviceName', kind, words);
            const status = row(page, 'deviceName').locator('.status');
            looks.push([
                await status.locator('.icon').getAttribute('data-icon'),
                await status.evaluate((text) => getComputedStyle(text).color),
            ]);
        };
        await startEditing(page, 'Den');
        await press(page, 'Enter');
        await look('accepted', 'Saved');
        await press(page, 'Enter', 'Enter');
        await look('unchanged', 'No change');
        await refuseDeviceName();
        await press(page, 'Enter');
        await typeOver(page, 'Attic');
        await press(page, 'Enter');
        await look('refused', 'Not changed: it was changed elsewhere in the meantime.');
        expect(new Set(looks.map(([sign]) => sign)).size).toBe(3);
        expect(new Set(looks.map(([, colour]) => colour)).size).toBe(3);
    });
});

/** Another client sends a time stamp in the future, so that every other request for the name is stale. */
function refuseDeviceName(): Promise<void> {
    return host.send({ type: 24, timestamp: 9000000000000, payload: { settingDBId: 'deviceName', to: 'Den' } });
}

test('a refused change is rolled back to the current value', async () => {
    await refuseDeviceName();
    await visitSettings(host, async (page) => {
        await startEditing(page, 'Attic');
        await press(page, 'Enter');
        await expectStatus(page, 'deviceName', 'refused', 'Not changed: ');
        await expectValue(page, 'deviceName', 'Den');
        await expectFocus(page, 'deviceName');
    });
});

test('the page refuses a value that is too long for the host', async () => {
    await visitSettings(host, async (page) => {
        await press(page, 'ArrowRight', 'Enter');
        await page.locator('form input').first().fill('x'.repeat(70_000));
        await press(page, 'Enter');
        await expectStatus(page, 'deviceName', 'refused', 'Not changed: the value is too long.');
        await expectValue(page, 'deviceName', 'TV');
    });
});

test('a missing reply is distinguished from a refusal', async () => {
    await visitSettings(
        host,
        async (page) => {
            await startEditing(page, 'Attic');
            host.freeze();
            await press(page, 'Enter');
            await expectStatus(page, 'deviceName', 'saving', 'Saving');
            await page.clock.fastForward(replyTimeout);
            await row(page, 'deviceName').locator('.status', { hasText: 'not responding' }).waitFor();
            host.thaw();
            await expectValue(page, 'deviceName', 'Attic');
        },
        { messagesStay: false, prepare: (page) => page.clock.install() },
    );
});

test('a conflicting edit is not overwritten: the person sees both values and keeps their own', async () => {
    await visitSettings(host, async (page) => {
        await startEditing(page, 'My text');
        await host.control('set', 'deviceName', 'Their text');
        await page.getByRole('alert').getByText('Changed to “Their text” in the meantime.').waitFor();
        expect(await page.getByRole('textbox').inputValue()).toBe('My text');
        await expectFocus(page, 'deviceName');
        await press(page, 'Enter');
        expect((await focus(page)).name).toBe('Keep my text');
        await press(page, 'Enter');
        expect(await page.getByRole('textbox').inputValue()).toBe('My text');
        await press(page, 'Enter');
        await expectStatus(page, 'deviceName', 'accepted', 'Saved');
        await expectValue(page, 'deviceName', 'My text');
    });
    expect(await host.control('get', 'deviceName')).toBe('deviceName=My text\n');
});

test('a conflicting edit can be replaced by the new value', async () => {
    await visitSettings(host, async (page) => {
        await startEditing(page, 'My text');
        await host.control('set', 'deviceName', 'Their text');
        await page.getByRole('alert').getByText('Their text').waitFor();
        await press(page, 'Enter', 'ArrowRight');
        expect((await focus(page)).name).toBe('Use the new value');
        await press(page, 'Enter');
        expect(await page.getByRole('textbox').inputValue()).toBe('Their text');
        await press(page, 'Escape');
        await expectValue(page, 'deviceName', 'Their text');
    });
});

test('after the host was killed the page reports it, reconnects and shows changes made meanwhile', async () => {
    await host.control('set', 'deviceName', 'Before');
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'device');
            await press(page, 'ArrowDown');
            await host.kill();
            await page.getByRole('alert').getByText('The TV is not responding.').waitFor();
            await expectFocus(page, 'friendlyName');
            await host.resume();
            await host.control('set', 'deviceName', 'After');
            await row(page, 'deviceName').getByText('After').waitFor();
            await page.getByRole('alert').getByText('The TV is not responding.').waitFor({ state: 'detached' });
            await expectFocus(page, 'friendlyName');
            await host.control('set', 'deviceName', 'Later');
            await row(page, 'deviceName').getByText('Later').waitFor();
        },
        { expected: hostIsAway },
    );
});

test('Enter on the banner reconnects without waiting for the retry delay', async () => {
    await visitSettings(
        host,
        async (page) => {
            await host.kill();
            await page.getByRole('button', { name: 'Try again now' }).waitFor();
            // From now on no retry delay ends.
            await page.clock.pauseAt(await page.evaluate(() => Date.now() + 3_600_000));
            await host.resume();
            await expect
                .poll(async () => {
                    const banner = page.getByRole('button', { name: 'Try again now' });
                    if ((await banner.count()) > 0) {
                        // An earlier attempt may still fail.
                        await banner.press('Enter');
                    }
                    return banner.count();
                })
                .toBe(0);
        },
        { expected: hostIsAway, messagesStay: false, prepare: (page) => page.clock.install() },
    );
});

test('a page that is no longer authorized asks for a new address', async () => {
    await visitSettings(
        host,
        async (page) => {
            await host.resumeAsNew();
            await page.getByRole('alert').getByText('settingsctl page').waitFor();
        },
        { expected: hostIsAway },
    );
});

test('a log-out by another client is shown', async () => {
    await host.control('set', 'deviceName', 'Somebody’s');
    await visitSettings(host, async (page) => {
        await expectValue(page, 'deviceName', 'Somebody’s');
        await host.control('logout');
        await row(page, 'deviceName').getByText('TV', { exact: true }).waitFor();
    });
});
