import type { Page } from 'playwright-core';
import { expect, test } from 'vitest';

import { hostOfEachTest } from './host';
import {
    enterSection,
    expectFocus,
    expectValue,
    focus,
    goDownTo,
    goToMenu,
    press,
    row,
    sectionIds,
    visitSettings,
} from './settings';

/** Fast, repeated and held keys of a remote control. */

const host = hostOfEachTest();

const three = ['en-US', 'fr-FR', 'de-DE'];

async function expectLocales(...locales: readonly string[]): Promise<void> {
    await expect.poll(() => host.value('orliaLocale')).toBe(JSON.stringify(locales));
}

/** The values of all SetSettings requests of the page, in order. */
async function asked(page: Page): Promise<string[]> {
    const values: string[] = [];
    page.on('websocket', (socket) => {
        socket.on('framesent', ({ payload }) => {
            const frame = JSON.parse(payload.toString()) as { type: number; payload?: { to?: string } };
            if (frame.type === 24) {
                values.push(frame.payload?.to ?? '');
            }
        });
    });
    await page.reload();
    await row(page, 'deviceName').waitFor();
    return values;
}

/** Holds a key until it has repeated so often. */
async function hold(page: Page, key: string, repeats = 17): Promise<void> {
    const downs = Array.from({ length: repeats + 1 }, () => page.keyboard.down(key));
    await Promise.all([...downs, page.keyboard.up(key)]);
}

test('repeated Enter on a section of the menu reorders and destroys nothing', async () => {
    await host.setLocales(...three);
    await visitSettings(host, async (page) => {
        const values = await asked(page);
        await goToMenu(page, 'language');
        await press(page, 'Enter', 'Enter');
        await expectFocus(page, 'move');
        // Picks a language up, drops it where it was, opens its menu again.
        await press(page, 'Enter', 'Enter', 'Enter');
        await expectFocus(page, 'move');
        await press(page, 'Escape', 'Escape');
        await enterSection(page, 'account');
        await press(page, 'ArrowDown', 'ArrowDown', 'ArrowDown');
        await expectFocus(page, 'log-out');
        await goToMenu(page, 'account');
        await press(page, 'Enter', 'Enter');
        // The second Enter explains what is only shown.
        await page.getByRole('dialog', { name: 'Entitlement' }).waitFor();
        expect(values).toEqual([]);
    });
    await expectLocales(...three);
});

test('a held Enter acts once: a switch, a removal, a section of the menu, an editor', async () => {
    await host.setLocales(...three);
    await visitSettings(host, async (page) => {
        const values = await asked(page);
        await enterSection(page, 'voice');
        await hold(page, 'Enter');
        await expect.poll(() => host.value('handsFreeEnabled')).toBe('true');
        await expect.poll(() => values).toEqual(['true']);

        await enterSection(page, 'language');
        await press(page, 'ArrowDown', 'ArrowDown', 'Enter', 'ArrowDown', 'ArrowDown');
        await expectFocus(page, 'remove');
        await hold(page, 'Enter');
        await expectLocales('en-US', 'fr-FR');
        await expectFocus(page, 'add');
        await expect.poll(() => values.length).toBe(2);

        await goToMenu(page, 'device');
        await hold(page, 'Enter');
        await expectFocus(page, 'deviceName');
        expect(await page.locator('form').count()).toBe(0);
        await hold(page, 'Enter');
        expect(await page.locator('form').count()).toBe(1);
        await page.keyboard.type('Den');
        await hold(page, 'Enter');
        await expect.poll(() => host.value('deviceName')).toBe('Den');
        expect(await page.locator('form').count()).toBe(0);
        await expect.poll(() => values.length).toBe(3);
        await press(page, 'Enter');
        await hold(page, 'Escape');
        await expectFocus(page, 'deviceName');
    });
});

test('very fast keys on a slow processor leave each section its own focus', async () => {
    await host.setLocales(...three);
    await visitSettings(host, async (page) => {
        const visited = sectionIds.slice(sectionIds.indexOf('device'));
        const session = await page.context().newCDPSession(page);
        await session.send('Emulation.setCPUThrottlingRate', { rate: 20 });
        // The menu opens on the first of them.
        const keys = visited.flatMap((_section, number) => [
            'ArrowRight',
            ...Array<string>(number % 3).fill('ArrowDown'),
            'ArrowLeft',
            'ArrowDown',
        ]);
        await Promise.all(keys.map((key) => page.keyboard.press(key)));
        await session.send('Emulation.setCPUThrottlingRate', { rate: 1 });
        await expectFocus(page, 'about');
        const places: string[] = [];
        for (const section of visited) {
            await enterSection(page, section);
            places.push((await focus(page)).row);
        }
        expect(places).toEqual([
            'deviceName',
            'fr-FR',
            'captionsStyles',
            'handsFreeEnabled',
            'selected',
            'change-1',
            'health',
        ]);
    });
});

test.each(['Escape', 'GoBack', 'BrowserBack', 'XF86Back'])(
    'the key %s closes a dialog or an editor first, then leads to the menu, where it is left to the TV',
    async (key) => {
        await visitSettings(host, async (page) => {
            /** The browser's driver knows only one of these keys. */
            const pressBack = () =>
                key === 'Escape'
                    ? press(page, key).then(() => false)
                    : page.evaluate(
                          (name) =>
                              document.activeElement?.dispatchEvent(
                                  new KeyboardEvent('keydown', { key: name, bubbles: true, cancelable: true }),
                              ) === true,
                          key,
                      );
            await enterSection(page, 'account');
            await press(page, 'ArrowDown', 'ArrowDown', 'ArrowDown', 'Enter');
            await page.getByRole('dialog').waitFor();
            expect(await pressBack()).toBe(false);
            await page.getByRole('dialog').waitFor({ state: 'detached' });
            await expectFocus(page, 'log-out');
            await enterSection(page, 'device');
            await press(page, 'Enter');
            await page.keyboard.type('Den');
            expect(await pressBack()).toBe(false);
            await page.locator('form').waitFor({ state: 'detached' });
            await expectFocus(page, 'deviceName');
            await expectValue(page, 'deviceName', 'TV');
            expect(await pressBack()).toBe(false);
            await expectFocus(page, 'device');
            expect(await pressBack()).toBe(key !== 'Escape');
            await expectFocus(page, 'device');
        });
    },
);

test('the browser’s own Back closes what is open, leads to the menu, and only then leaves', async () => {
    await visitSettings(host, async (page) => {
        const goBack = () =>
            page.evaluate(() => {
                history.back();
            });
        await enterSection(page, 'voice');
        await goDownTo(page, 'handsFreeAlwaysOnEnabled');
        await goBack();
        await expectFocus(page, 'voice');
        await expect.poll(() => new URL(page.url()).hash).toBe('#voice');
        await page.evaluate(() => {
            history.forward();
        });
        await expectFocus(page, 'handsFreeAlwaysOnEnabled');
        await goToMenu(page, 'account');
        await press(page, 'ArrowRight', 'ArrowDown', 'ArrowDown', 'ArrowDown', 'Enter');
        await page.getByRole('dialog').waitFor();
        await goBack();
        await page.getByRole('dialog').waitFor({ state: 'detached' });
        await expectFocus(page, 'log-out');
        await enterSection(page, 'device');
        await press(page, 'Enter');
        await page.keyboard.type('Den');
        await goBack();
        await page.locator('form').waitFor({ state: 'detached' });
        await expectFocus(page, 'deviceName');
        await goBack();
        await expectFocus(page, 'device');
        await expect.poll(() => new URL(page.url()).hash).toBe('#device');
        // Moving in and out by keys leaves no entry in the history.
        await press(page, 'ArrowRight', 'ArrowLeft', 'ArrowRight', 'ArrowLeft');
        await expectFocus(page, 'device');
        await goBack();
        await page.waitForURL('about:blank');
    });
});

test('held arrows repeat', async () => {
    await visitSettings(host, async (page) => {
        await hold(page, 'ArrowDown', sectionIds.length);
        await expectFocus(page, 'about');
    });
});
