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
async function checkDialog(page: Page, place: string, check: () => Promise<void>): Promise<void> {
    await row(page, place).locator('button').focus();
    await press(page, 'Enter');
    await page.getByRole('dialog').waitFor();
    await check();
    await press(page, 'Escape');
    await page.getByRole('dialog').waitFor({ state: 'detached' });
    await expectFocus(page, place);
}

test.each(languages)(
    'in %s axe-core finds nothing in any view, and nothing scrolls sideways on a phone',
    async (code, locale) => {
        await host.control('set', 'orliaLocale', JSON.stringify([locale, 'it-IT']));
        const colours = code === 'en';
        const forward = code === 'ar' ? 'ArrowLeft' : 'ArrowRight';
        await visitSettings(host, async (page) => {
            const check = (view: string) => expectAccessible(page, `${view} in ${code}`, { colours });
            await page.locator(`html[lang="${code}"]`).waitFor();
            for (const section of sectionIds) {
                await enterSection(page, section, forward);
                await check(section);
            }
            await enterSection(page, 'account', forward);
            await checkDialog(page, 'log-out', () => check('the log-out'));
            await enterSection(page, 'language', forward);
            await checkDialog(page, 'add', () => check('adding a language'));
            await checkDialog(page, 'timezone', () => check('the time zones'));
            await enterSection(page, 'device', forward);
            await press(page, 'Enter');
            await typeOver(page, 'Mine');
            await host.control('set', 'deviceName', `Theirs ${code}`);
            await page.locator('.conflict').waitFor();
            await check('an edit in conflict');
            await press(page, 'Enter', 'Enter', 'Enter');
            await expectStatus(page, 'deviceName', 'accepted', /\S/);
            await check('a saved value');

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
