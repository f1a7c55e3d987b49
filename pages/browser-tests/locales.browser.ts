import type { Page } from 'playwright-core';
import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { hostOfEachTest } from './host';
import { enterSection, expectFocus, focus, goDownTo, press, row, visitSettings } from './settings';

/** The assistant's languages as a person changes them, with a remote control, a mouse or a finger. */

const host = hostOfEachTest();

async function expectLocales(...locales: readonly string[]): Promise<void> {
    await expect.poll(() => host.value('orliaLocale')).toBe(JSON.stringify(locales));
}

/** Opens the menu of a language and moves to an item of it. */
async function openMenu(page: Page, locale: string, item: string): Promise<void> {
    await goDownTo(page, locale);
    await press(page, 'Enter');
    await page.getByRole('dialog').waitFor();
    for (let steps = 0; steps < 4 && (await focus(page)).row !== item; steps += 1) {
        await press(page, 'ArrowDown');
    }
    await expectFocus(page, item);
}

const question = /Show these pages in/;

test('a language is moved with up and down, dropped with Enter, put back with Back', async () => {
    await host.setLocales('en-US', 'fr-FR', 'de-DE');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await openMenu(page, 'fr-FR', 'move');
        await expectAccessible(page, 'the menu of a language');
        await press(page, 'Enter', 'ArrowDown');
        await page.getByText('French (France): 3 of 3.').waitFor();
        await expectAccessible(page, 'a language that was picked up');
        // Sideways does nothing, nor does the end of the list.
        await press(page, 'ArrowRight', 'ArrowLeft', 'ArrowDown', 'ArrowUp', 'ArrowDown');
        await expectFocus(page, 'fr-FR');
        await expectLocales('en-US', 'fr-FR', 'de-DE');
        await press(page, 'Escape');
        await page.getByText('of 3.').waitFor({ state: 'detached' });
        await expectFocus(page, 'fr-FR');
        await openMenu(page, 'fr-FR', 'move');
        await press(page, 'Enter', 'ArrowDown', 'Enter');
        await expectLocales('en-US', 'de-DE', 'fr-FR');
        await expectFocus(page, 'fr-FR');
        await page.getByText('Saved').waitFor();
    });
});

test('a change is undone from where the focus is', async () => {
    await host.setLocales('en-US', 'fr-FR', 'de-DE');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await openMenu(page, 'fr-FR', 'remove');
        await press(page, 'Enter');
        await expectLocales('en-US', 'de-DE');
        // The row that took its place.
        await expectFocus(page, 'de-DE');
        await page.getByText('You can undo this for ten seconds.').waitFor();
        await expectAccessible(page, 'a change that can be undone');
        // It goes where the focus goes.
        await press(page, 'ArrowDown', 'ArrowUp', 'ArrowRight');
        expect((await focus(page)).name.trim()).toBe('Undo');
        await press(page, 'Enter');
        await expectLocales('en-US', 'fr-FR', 'de-DE');

        await goDownTo(page, 'add');
        await press(page, 'Enter');
        await page.getByRole('dialog').waitFor();
        await page.keyboard.type('italian it');
        await press(page, 'ArrowDown', 'Enter');
        await expectLocales('en-US', 'fr-FR', 'de-DE', 'it-IT');
        await expectFocus(page, 'add');
        await press(page, 'ArrowRight', 'Enter');
        await expectLocales('en-US', 'fr-FR', 'de-DE');
        // Undoing is a change, too.
        await press(page, 'ArrowRight', 'Enter');
        await expectLocales('en-US', 'fr-FR', 'de-DE', 'it-IT');
    });
});

test('what others changed meanwhile is not undone, and ends a move', async () => {
    await host.setLocales('en-US', 'fr-FR', 'de-DE');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await openMenu(page, 'fr-FR', 'remove');
        await press(page, 'Enter');
        await page.getByRole('button', { name: 'Undo' }).waitFor();
        await host.setLocales('en-US', 'de-DE', 'ja-JP');
        await row(page, 'ja-JP').waitFor();
        expect(await page.getByRole('button', { name: 'Undo' }).count()).toBe(0);
        await openMenu(page, 'ja-JP', 'move');
        await press(page, 'Enter', 'ArrowUp');
        await host.setLocales('en-US', 'es-MX');
        await row(page, 'es-MX').waitFor();
        await press(page, 'Enter');
        await expectLocales('en-US', 'es-MX');
    });
});

test('ten seconds after a change it is no longer undone here', async () => {
    await host.setLocales('en-US', 'fr-FR', 'de-DE');
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'language');
            await openMenu(page, 'de-DE', 'remove');
            await press(page, 'Enter');
            await page.getByRole('button', { name: 'Undo' }).waitFor();
            await page.clock.fastForward(10_000);
            await page.getByRole('button', { name: 'Undo' }).waitFor({ state: 'detached' });
        },
        { prepare: (page) => page.clock.install(), messagesStay: false },
    );
});

test('before the pages change their language they ask in both', async () => {
    await host.setLocales('en-US', 'ar-EG', 'it-IT');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await openMenu(page, 'ar-EG', 'primary');
        await press(page, 'Enter');
        await page.getByText('Show these pages in Arabic?').waitFor();
        await page.getByText('هل تريد عرض هذه الصفحات باللغة العربية؟').waitFor();
        await expectAccessible(page, 'the question in two languages');
        await press(page, 'Escape');
        await page.getByRole('dialog').waitFor({ state: 'detached' });
        await expectLocales('en-US', 'ar-EG', 'it-IT');
        await expectFocus(page, 'ar-EG');

        await openMenu(page, 'ar-EG', 'primary');
        await press(page, 'Enter');
        await page.getByText(question).waitFor();
        await press(page, 'Enter');
        await page.locator('html[lang="ar"]').waitFor();
        await expectLocales('ar-EG', 'en-US', 'it-IT');
        await expectFocus(page, 'ar-EG');
        // Undoing it leads back, after the same question.
        await press(page, 'ArrowLeft', 'Enter');
        await page.getByText('Show these pages in English?').waitFor();
        await press(page, 'Enter');
        await page.locator('html[lang="en"]').waitFor();
        await expectLocales('en-US', 'ar-EG', 'it-IT');
    });
});

test('a primary language without a translation of the pages is told so, without a question when nothing changes', async () => {
    await host.setLocales('en-US', 'it-IT');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await openMenu(page, 'it-IT', 'primary');
        await press(page, 'Enter');
        await expectLocales('it-IT', 'en-US');
        expect(await page.getByText(question).count()).toBe(0);
    });
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await page
            .getByText(/in English/)
            .filter({ hasText: 'Italian' })
            .waitFor();
    });
});

test('the only language cannot be removed, and its menu says why', async () => {
    await host.setLocales('en-US');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await press(page, 'Enter');
        await page.getByRole('dialog').getByText('At least one language is required.').waitFor();
        await expectFocus(page, 'cancel');
        await press(page, 'Enter');
        await expectFocus(page, 'en-US');
    });
});

test.each(['mouse', 'touch'] as const)('%s alone moves a language and undoes it', async (pointer) => {
    await host.setLocales('en-US', 'fr-FR', 'de-DE');
    await visitSettings(
        host,
        async (page) => {
            const use = async (name: string) => {
                const button = page.getByRole('button', { name, exact: true });
                await (pointer === 'touch' ? button.tap() : button.click());
            };
            await use('Language and region');
            await use('French (France)');
            await use('Move');
            await use('Move down');
            await use('French (France)');
            await expectLocales('en-US', 'de-DE', 'fr-FR');
            await use('Undo');
            await expectLocales('en-US', 'fr-FR', 'de-DE');
        },
        { hasTouch: pointer === 'touch' },
    );
});
