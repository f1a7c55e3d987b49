import type { Page } from 'playwright-core';
import { test } from 'vitest';

import { expectAccessible } from './accessibility';
import { hostOfFile } from './host';
import {
    enterSection,
    expectFocus,
    expectStatus,
    languages,
    press,
    row,
    sectionIds,
    typeOver,
    visitSettings,
} from './settings';
import { expectNoSidewaysScroll, phone } from './visit';

const host = hostOfFile();

/** Opens the dialog of a row, checks it, and closes it. */
async function checkDialog(page: Page, place: string, view: string): Promise<void> {
    await row(page, place).locator('button').focus();
    await press(page, 'Enter');
    await page.getByRole('dialog').waitFor();
    await expectAccessible(page, view);
    await press(page, 'Escape');
    await page.getByRole('dialog').waitFor({ state: 'detached' });
    await expectFocus(page, place);
}

test.each(languages)(
    'in %s axe-core finds nothing in any view, and nothing scrolls sideways on a phone',
    async (code, locale) => {
        await host.control('set', 'orliaLocale', JSON.stringify([locale, 'it-IT']));
        const forward = code === 'ar' ? 'ArrowLeft' : 'ArrowRight';
        await visitSettings(host, async (page) => {
            await page.locator(`html[lang="${code}"]`).waitFor();
            for (const section of sectionIds) {
                await enterSection(page, section, forward);
                await expectAccessible(page, `${section} in ${code}`);
            }
            await enterSection(page, 'account', forward);
            await checkDialog(page, 'log-out', `the log-out in ${code}`);
            await enterSection(page, 'language', forward);
            await checkDialog(page, 'add', `adding a language in ${code}`);
            await checkDialog(page, 'timezone', `the time zones in ${code}`);
            await enterSection(page, 'device', forward);
            await press(page, 'Enter');
            await typeOver(page, 'Mine');
            await host.control('set', 'deviceName', `Theirs ${code}`);
            await page.locator('.conflict').waitFor();
            await expectAccessible(page, `an edit in conflict in ${code}`);
            await press(page, 'Enter', 'Enter', 'Enter');
            await expectStatus(page, 'deviceName', 'accepted', /\S/);
            await expectAccessible(page, `a saved value in ${code}`);

            await page.setViewportSize(phone);
            for (const section of sectionIds) {
                await enterSection(page, section, forward);
                await expectNoSidewaysScroll(page);
            }
            await enterSection(page, 'language', forward);
            await row(page, 'timezone').locator('button').focus();
            await press(page, 'Enter');
            await page.getByRole('dialog').waitFor();
            await expectNoSidewaysScroll(page);
        });
    },
);
