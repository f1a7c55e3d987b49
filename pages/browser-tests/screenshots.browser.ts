import type { Page } from 'playwright-core';
import { test } from 'vitest';

import { hostOfFile } from './host';
import { expectLooksAsStored } from './screenshots';
import { enterSection, expectStatus, languages, press, row, sectionIds, typeOver, visitSettings } from './settings';
import { hostIsAway, phone, small, wide } from './visit';

const host = hostOfFile(async (host) => {
    for (const [key, value] of [
        ['deviceName', 'Living room'],
        ['friendlyName', 'Big screen'],
        ['companionDevice', '["Pocket phone","Phone"]'],
        ['handsFreeEnabled', 'true'],
        ['tovanEntitlementStatus', 'active'],
    ] as const) {
        await host.control('set', key, value);
    }
    await host.control('device', 'captions', 'on');
});

/** Waits until the row of the time zone has its city and the time. */
async function expectCity(page: Page): Promise<void> {
    await row(page, 'timezone')
        .getByText(/^(Vancouver|バンクーバー|فانكوفر) · /)
        .waitFor();
}

test.each([
    ['1920x1080', wide],
    ['1280x720', small],
] as const)('every section looks as stored at %s', async (size, viewport) => {
    await host.setLocales('en-US', 'fr-FR', 'de-DE');
    await visitSettings(
        host,
        async (page) => {
            for (const section of sectionIds) {
                await enterSection(page, section);
                await page.locator('main', { hasNotText: 'Unknown' }).waitFor();
                if (section === 'language') {
                    await expectCity(page);
                }
                await expectLooksAsStored(page, `${section}-${size}`);
            }
        },
        { viewport },
    );
});

test.each(languages.filter(([code]) => code !== 'en'))(
    'the languages of the assistant look as stored in %s',
    async (code, locale) => {
        await host.setLocales(locale, 'en-GB');
        await visitSettings(
            host,
            async (page) => {
                await enterSection(page, 'language', code === 'ar' ? 'ArrowLeft' : 'ArrowRight');
                await expectCity(page);
                await expectLooksAsStored(page, `language-${code}-1280x720`);
            },
            { viewport: small },
        );
    },
);

test('dialogs look as stored', async () => {
    await host.setLocales('en-US');
    // No daylight saving time there.
    await host.control('set', 'timezone', 'Asia/Tokyo');
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'account');
            await row(page, 'log-out').locator('button').focus();
            await press(page, 'Enter');
            await page.getByRole('dialog').waitFor();
            await expectLooksAsStored(page, 'log-out-1280x720');
            await press(page, 'Escape');
            await enterSection(page, 'language');
            await row(page, 'add').locator('button').focus();
            await press(page, 'Enter');
            await page.getByRole('dialog').waitFor();
            await expectLooksAsStored(page, 'add-language-1280x720');
            await press(page, 'Escape');
            await row(page, 'timezone').locator('button').focus();
            await press(page, 'Enter');
            await page.keyboard.type('tokyo');
            await page.getByText('1 found').waitFor();
            await expectLooksAsStored(page, 'timezone-1280x720');
        },
        { viewport: small },
    );
    await host.control('set', 'timezone', 'America/Vancouver');
});

test('a phone looks as stored', async () => {
    await host.setLocales('en-US', 'fr-FR');
    await visitSettings(
        host,
        async (page) => {
            await expectLooksAsStored(page, 'device-360x740');
            await enterSection(page, 'language');
            await expectCity(page);
            await expectLooksAsStored(page, 'language-360x740');
        },
        { viewport: phone },
    );
});

test('results of changes, a conflicting edit and a lost connection look as stored', async () => {
    await host.setLocales('en-US');
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'device');
            await press(page, 'Enter');
            await typeOver(page, 'Attic');
            await press(page, 'Enter');
            await expectStatus(page, 'deviceName', 'accepted', 'Saved');
            await press(page, 'ArrowDown', 'Enter', 'Enter');
            await expectStatus(page, 'friendlyName', 'unchanged', 'No change');
            await press(page, 'ArrowDown', 'Enter');
            await page.locator('form input').first().fill('x'.repeat(70_000));
            await press(page, 'Enter');
            await expectStatus(page, 'companionDevice', 'refused', 'too long');
            await expectLooksAsStored(page, 'outcomes-1280x720');
            await press(page, 'ArrowUp', 'Enter');
            await typeOver(page, 'Mine');
            await host.control('set', 'friendlyName', 'Theirs');
            await page.locator('.conflict').waitFor();
            await page.locator('.message', { hasText: 'Theirs' }).waitFor();
            await expectLooksAsStored(page, 'conflict-1280x720');
            await press(page, 'Escape');
            await host.control('set', 'deviceName', 'Living room');
            await host.control('set', 'friendlyName', 'Big screen');
            await row(page, 'friendlyName').getByText('Big screen').waitFor();
            await host.kill();
            await page.getByRole('alert').getByRole('button').waitFor();
            // It disappears at any time.
            await page.locator('.message').evaluate((element: HTMLElement) => {
                element.hidden = true;
            });
            await expectLooksAsStored(page, 'lost-1280x720');
        },
        { viewport: small, expected: hostIsAway },
    );
});
