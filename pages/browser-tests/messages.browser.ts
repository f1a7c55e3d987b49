import type { Locator, Page } from 'playwright-core';
import { expect, test } from 'vitest';

import { hostOfEachTest } from './host';
import { enterSection, expectFocus, expectStatus, expectValue, press, row, typeOver, visitSettings } from './settings';
import { hostIsAway } from './visit';

/** The messages of the page about values, and that it writes only what a person entered. */

const host = hostOfEachTest();

/** A page whose clock the test can advance. */
const withClock = { messagesStay: false, prepare: (page: Page) => page.clock.install() };

async function expectGone(message: Locator): Promise<void> {
    await message.waitFor({ state: 'detached' });
}

test.each(['["a","b","c"]', 'x', 'null', '[ "Phone" ]', '{"a":1}'])(
    'Enter twice on the companion device %s writes nothing',
    async (value) => {
        await host.control('set', 'companionDevice', value);
        const written: string[] = [];
        await visitSettings(
            host,
            async (page) => {
                await expectValue(page, 'companionDevice', value === '[ "Phone" ]' ? 'Phone' : value);
                await enterSection(page, 'device');
                await press(page, 'ArrowDown', 'ArrowDown', 'Enter', 'Enter');
                await expectStatus(page, 'companionDevice', 'unchanged', 'No change');
                await expectFocus(page, 'companionDevice');
                expect(written).toEqual([]);
            },
            {
                prepare: (page) =>
                    page.routeWebSocket(/settings/, (socket) => {
                        const server = socket.connectToServer();
                        socket.onMessage((message) => {
                            written.push(...(/"type":24.*/.exec(message.toString()) ?? []));
                            server.send(message);
                        });
                    }),
            },
        );
        expect(await host.value('companionDevice')).toBe(value);
    },
);

test('a value of an unexpected form is edited as text', async () => {
    await host.control('set', 'companionDevice', '["a","b","c"]');
    await host.control('set', 'pttAlwaysOnDiscovered', 'perhaps');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'device');
        await press(page, 'ArrowDown', 'ArrowDown', 'Enter');
        expect(await page.getByRole('textbox').inputValue()).toBe('["a","b","c"]');
        await press(page, 'End', 'ArrowLeft');
        await page.keyboard.type(',"d"');
        await press(page, 'Enter');
        await expectStatus(page, 'companionDevice', 'accepted', 'Saved');
        await expectValue(page, 'companionDevice', '["a","b","c","d"]');
        await enterSection(page, 'voice');
        await row(page, 'pttAlwaysOnDiscovered').getByText('perhaps').waitFor();
    });
    expect(await host.value('companionDevice')).toBe('["a","b","c","d"]');
    expect(await host.value('pttAlwaysOnDiscovered')).toBe('perhaps');
});

test.each([
    ['empty', ''],
    ['blank', '   '],
])('a name that is left %s is reset to the default, and the page says so', async (_how, text) => {
    await host.control('set', 'deviceName', 'Den');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'device');
        // The second time it is the default already.
        for (let times = 0; times < 2; times += 1) {
            await press(page, 'Enter');
            await page.keyboard.press('Control+A');
            await press(page, 'Delete');
            await page.keyboard.type(text);
            await press(page, 'Enter');
            await expectStatus(page, 'deviceName', 'default', 'Reset to the default: TV');
            await expectValue(page, 'deviceName', 'TV');
        }
    });
    expect(await host.value('deviceName')).toBe('TV');
});

test('a blank name from another client is visible, and an empty one is announced as the default', async () => {
    await visitSettings(host, async (page) => {
        await host.control('set', 'deviceName', '   ');
        await expectValue(page, 'deviceName', '“   ”');
        await host.control('set', 'deviceName', '');
        await page.locator('.message', { hasText: 'Device name set to TV by settingsctl' }).waitFor();
        await expectValue(page, 'deviceName', 'TV');
    });
});

test('a change of a key that the catalogue does not have is not announced', async () => {
    await visitSettings(host, async (page) => {
        await page.locator('.message').evaluate((element) => {
            new MutationObserver(() => {
                document.body.dataset['told'] = `${document.body.dataset['told'] ?? ''}${element.textContent}; `;
            }).observe(element, { childList: true, characterData: true, subtree: true });
        });
        await host.control('set', 'deviceName', 'Den');
        await host.control('set', '--any-key', 'myOwnKey', 'secret');
        await host.control('set', 'friendlyName', 'Telly');
        await page.locator('.message', { hasText: 'Telly' }).waitFor();
        expect(await page.locator('body').getAttribute('data-told')).toBe(
            'Device name set to Den by settingsctl; Friendly name set to Telly by settingsctl; ',
        );
    });
});

test('two editors are never open at once, and the text in the first is kept', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'device');
        await press(page, 'Enter');
        await typeOver(page, 'Den');
        await press(page, 'ArrowDown', 'ArrowDown');
        await expectFocus(page, 'friendlyName');
        await press(page, 'Enter');
        await page.getByRole('form', { name: 'Change Friendly name' }).waitFor();
        expect(await page.locator('form').count()).toBe(1);
        await expectStatus(page, 'deviceName', 'draft', 'Not saved: Den');
        await press(page, 'ArrowUp');
        await expectFocus(page, 'deviceName');
        await press(page, 'Enter');
        await page.getByRole('form', { name: 'Change Device name' }).waitFor();
        expect(await page.locator('form').count()).toBe(1);
        expect(await page.getByRole('textbox').inputValue()).toBe('Den');
        await press(page, 'Enter');
        await expectStatus(page, 'deviceName', 'accepted', 'Saved');
    });
    expect(await host.value('deviceName')).toBe('Den');
});

test('the message that a value was saved is cleared after a while', async () => {
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'voice');
            await press(page, 'Enter');
            await expectStatus(page, 'handsFreeEnabled', 'accepted', 'Saved');
            await page.clock.fastForward(6_000);
            await expectGone(row(page, 'handsFreeEnabled').locator('.status[data-kind]'));
        },
        withClock,
    );
});

test('the message of a log-out is cleared with the section', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'account');
        await press(page, 'ArrowDown', 'ArrowDown', 'ArrowDown', 'Enter', 'ArrowRight', 'Enter');
        await page.getByText('You are logged out.').waitFor();
        await enterSection(page, 'voice');
        await enterSection(page, 'account');
        expect(await page.getByText('You are logged out.').count()).toBe(0);
    });
});

test('the message that the TV is not responding is cleared when it does', async () => {
    await visitSettings(
        host,
        async (page) => {
            await host.kill();
            await page.getByRole('alert').getByText('not responding').waitFor();
            await enterSection(page, 'device');
            await press(page, 'Enter');
            await typeOver(page, 'Den');
            await press(page, 'Enter');
            await expectStatus(page, 'deviceName', 'refused', 'the TV is not responding');
            await host.resume();
            await expectGone(page.locator('.banner span'));
            await expectGone(row(page, 'deviceName').locator('.status[data-kind]'));
            await expectValue(page, 'deviceName', 'TV');

            await host.kill();
            await page.getByRole('alert').getByText('not responding').waitFor();
            await enterSection(page, 'account');
            await press(page, 'ArrowDown', 'ArrowDown', 'Enter');
            await page.getByText('Failed: the TV').waitFor();
            await host.resume();
            await expectGone(page.locator('.banner span'));
            expect(await page.getByText('Failed: the TV').count()).toBe(0);
        },
        { expected: hostIsAway },
    );
});
