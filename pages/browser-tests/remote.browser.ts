import type { Page } from 'playwright-core';
import { expect, test } from 'vitest';

import { hostOfEachTest } from './host';
import {
    enterSection,
    expectFocus,
    expectValue,
    focus,
    goToMenu,
    press,
    row,
    sectionIds,
    visitSettings,
} from './settings';
import { wide } from './visit';

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

/** Moves forward in the row until the control of that name has the focus. */
async function goForwardTo(page: Page, name: RegExp): Promise<void> {
    for (let steps = 0; steps < 5 && !name.test((await focus(page)).name); steps += 1) {
        await press(page, 'ArrowRight');
    }
    expect((await focus(page)).name).toMatch(name);
}

test('repeated Enter on a section of the menu reorders and destroys nothing', async () => {
    await host.setLocales(...three);
    await visitSettings(host, async (page) => {
        const values = await asked(page);
        await goToMenu(page, 'language');
        await press(page, 'Enter', 'Enter', 'Enter');
        await expectFocus(page, 'en-US');
        expect((await focus(page)).name).toBe('American English, Primary');
        await press(page, 'ArrowDown');
        await goForwardTo(page, /^Remove /);
        await goToMenu(page, 'language');
        await press(page, 'Enter', 'Enter', 'Enter');
        expect((await focus(page)).name).toBe('French (France)');
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

test('repeated Enter moves a language to the top, or to the end, and then does nothing', async () => {
    await host.setLocales(...three);
    await visitSettings(host, async (page) => {
        const values = await asked(page);
        await enterSection(page, 'language');
        await press(page, 'ArrowDown', 'ArrowDown');
        await goForwardTo(page, /up$/);
        const seen: string[] = [];
        for (let times = 0; times < 5; times += 1) {
            await press(page, 'Enter');
            const { row: locale, name } = await focus(page);
            seen.push(`${locale}: ${name}`);
        }
        expect(seen).toEqual([
            'de-DE: Move German (Germany) up',
            // Now the page is in German, and cannot move it further up.
            ...Array<string>(4).fill('de-DE: Deutsch (Deutschland), Erste Wahl'),
        ]);
        await expectLocales('de-DE', 'en-US', 'fr-FR');
        await expect.poll(() => values.length).toBe(2);
        await goForwardTo(page, /^.* nach unten$/);
        await press(page, 'Enter', 'Enter', 'Enter', 'Enter');
        await expectLocales('en-US', 'fr-FR', 'de-DE');
        expect(await focus(page)).toEqual({ row: 'de-DE', name: 'German (Germany)' });
        await expect.poll(() => values.length).toBe(4);
    });
});

test('a held Enter acts once: a switch, a removal, a move, a section of the menu, an editor', async () => {
    await host.setLocales(...three);
    await visitSettings(host, async (page) => {
        const values = await asked(page);
        await enterSection(page, 'voice');
        await hold(page, 'Enter');
        await expect.poll(() => host.value('handsFreeEnabled')).toBe('true');
        await expect.poll(() => values).toEqual(['true']);

        await enterSection(page, 'language');
        await press(page, 'ArrowDown', 'ArrowDown');
        await goForwardTo(page, /^Remove /);
        await hold(page, 'Enter');
        await expectLocales('en-US', 'fr-FR');
        expect(await focus(page)).toEqual({ row: 'add', name: '＋ Add a language' });
        await press(page, 'ArrowUp');
        await goForwardTo(page, /up$/);
        await hold(page, 'Enter');
        await expectLocales('fr-FR', 'en-US');
        expect(await focus(page)).toEqual({ row: 'fr-FR', name: 'français (France), Principale' });
        await expect.poll(() => values.length).toBe(3);

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
        await expect.poll(() => values.length).toBe(4);
        await press(page, 'Enter');
        await hold(page, 'Escape');
        await expectFocus(page, 'deviceName');
    });
});

test('very fast keys on a slow processor leave each section its own focus', async () => {
    await host.setLocales(...three);
    await visitSettings(host, async (page) => {
        const session = await page.context().newCDPSession(page);
        await session.send('Emulation.setCPUThrottlingRate', { rate: 20 });
        const keys = sectionIds.flatMap((_section, number) => [
            'ArrowRight',
            ...Array<string>(number % 3).fill('ArrowDown'),
            'ArrowLeft',
            'ArrowDown',
        ]);
        await Promise.all(keys.map((key) => page.keyboard.press(key)));
        await session.send('Emulation.setCPUThrottlingRate', { rate: 1 });
        await expectFocus(page, 'account');
        const places: string[] = [];
        for (const section of sectionIds) {
            await enterSection(page, section);
            places.push((await focus(page)).row);
        }
        expect(places).toEqual([
            'deviceName',
            'fr-FR',
            'captionsStyles',
            'handsFreeEnabled',
            'doNotDisturbEnabled',
            'open-settings',
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
        await press(page, 'ArrowDown');
        await goBack();
        await expectFocus(page, 'voice');
        expect(new URL(page.url()).hash).toBe('#voice');
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
        expect(new URL(page.url()).hash).toBe('#device');
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
        await expectFocus(page, 'account');
    });
});

test('after a removal the focus is on the name of the next language', async () => {
    await host.setLocales(...three);
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'language');
            await press(page, 'ArrowDown');
            await goForwardTo(page, /^Remove /);
            await press(page, 'Enter');
            await expectLocales('en-US', 'de-DE');
            expect(await focus(page)).toEqual({ row: 'de-DE', name: 'German (Germany)' });
        },
        { viewport: wide },
    );
});
