import { afterAll, beforeAll, test } from 'vitest';

import { Host } from './host';
import { expectLooksAsStored } from './screenshots';
import { enterSection, languages, press, row, sectionIds, visitSettings } from './settings';
import { phone, small, wide } from './visit';

let host: Host;

beforeAll(async () => {
    host = await Host.start();
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

afterAll(() => host.stop());

async function setLocales(...locales: readonly string[]): Promise<void> {
    await host.control('set', 'orliaLocale', JSON.stringify(locales));
}

test.each([
    ['1920x1080', wide],
    ['1280x720', small],
] as const)('every section looks as stored at %s', async (size, viewport) => {
    await setLocales('en-US', 'fr-FR', 'de-DE');
    await visitSettings(
        host,
        async (page) => {
            for (const section of sectionIds) {
                await enterSection(page, section);
                await expectLooksAsStored(page, `${section}-${size}`);
            }
        },
        { viewport },
    );
});

test.each(languages.filter(([code]) => code !== 'en'))(
    'the languages of the assistant look as stored in %s',
    async (code, locale) => {
        await setLocales(locale, 'en-GB');
        await visitSettings(
            host,
            async (page) => {
                await enterSection(page, 'language', code === 'ar' ? 'ArrowLeft' : 'ArrowRight');
                await expectLooksAsStored(page, `language-${code}-1280x720`);
            },
            { viewport: small },
        );
    },
);

test('dialogs look as stored', async () => {
    await setLocales('en-US');
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
        },
        { viewport: small },
    );
});

test('a phone looks as stored', async () => {
    await setLocales('en-US', 'fr-FR');
    await visitSettings(
        host,
        async (page) => {
            await expectLooksAsStored(page, 'device-360x740');
            await enterSection(page, 'language');
            await expectLooksAsStored(page, 'language-360x740');
        },
        { viewport: phone },
    );
});
