import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { hostOfFile } from './host';
import { enterSection, expectFocus, focus, goToMenu, press, row, visitSettings } from './settings';

const host = hostOfFile();

test('a person searches from the first row of the menu, and Enter leads to the setting', async () => {
    await visitSettings(host, async (page) => {
        await goToMenu(page, 'search');
        await press(page, 'ArrowRight');
        await expectFocus(page, 'search-field');
        await expectAccessible(page, 'the search');
        await page.keyboard.type('BLUE');
        await page.getByText('1 found').waitFor();
        await press(page, 'ArrowDown');
        await expectFocus(page, 'to-captionsStyles');
        await press(page, 'Enter');
        await expectFocus(page, 'captionsStyles');
        await expect.poll(() => new URL(page.url()).hash).toBe('#captions');
        // What was typed is still there for the next look.
        await goToMenu(page, 'search');
        expect(await page.getByRole('textbox').inputValue()).toBe('BLUE');
    });
});

test.each([
    ['a name', 'hands', 'handsFreeEnabled'],
    ['a word of an explanation', 'wake', 'handsFreeAlwaysOnEnabled'],
    ['an action', 'log out', 'log-out'],
    ['a section', 'do not dist', 'doNotDisturbEnabled'],
])('%s leads to its row', async (_what, typed, wanted) => {
    await visitSettings(host, async (page) => {
        await press(page, 'F3');
        await expectFocus(page, 'search-field');
        await page.keyboard.type(typed);
        await press(page, 'Enter');
        await expectFocus(page, `to-${wanted}`);
        await press(page, 'Enter');
        await expectFocus(page, wanted);
    });
});

test('the search keys lead to the search from anywhere, and Back leads out of it', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'device');
        await press(page, 'Enter');
        await page.keyboard.type('Den');
        await press(page, 'F3');
        await expectFocus(page, 'search-field');
        await press(page, 'Escape');
        await expectFocus(page, 'search');
        // The unsaved text waits in its row.
        await enterSection(page, 'device');
        await expect.poll(() => row(page, 'deviceName').getByRole('textbox').inputValue()).toBe('Den');
        await press(page, 'Escape');

        await enterSection(page, 'account');
        await press(page, 'ArrowDown', 'ArrowDown', 'ArrowDown', 'Enter');
        await page.getByRole('dialog').waitFor();
        await page.evaluate(() =>
            document.activeElement?.dispatchEvent(
                new KeyboardEvent('keydown', { key: 'BrowserSearch', bubbles: true }),
            ),
        );
        await expectFocus(page, 'search-field');
        expect(await page.getByRole('dialog').count()).toBe(0);
    });
});

test('a person searches in the language of the pages, without its accents', async () => {
    await host.setLocales('de-DE');
    await visitSettings(host, async (page) => {
        await page.locator('html[lang="de"]').waitFor();
        await press(page, 'F3');
        await page.keyboard.type('schriftgrosse');
        await page.getByText('1 gefunden').waitFor();
        await press(page, 'ArrowDown');
        expect((await focus(page)).name).toContain('Schriftgröße');
        await press(page, 'ArrowUp');
        await page.keyboard.type('xyz');
        await page.getByText('Keine Treffer').waitFor();
    });
    await host.setLocales('en-US');
});
