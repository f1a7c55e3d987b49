import { mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

import type { Page } from 'playwright-core';
import { test } from 'vitest';

import { hostOfFile } from './host';
import { enterSection, expectStatus, press, typeOver, visitSettings } from './settings';
import { smallPng } from './smallPng';
import { small, visit, wide } from './visit';

const images = fileURLToPath(new URL('../../docs/images', import.meta.url));

const host = hostOfFile();
mkdirSync(images, { recursive: true });

async function take(page: Page, name: string): Promise<void> {
    writeFileSync(join(images, `${name}.png`), smallPng(await page.screenshot({ caret: 'hide' })));
}

test('the settings', async () => {
    await host.setLocales('en-US', 'fr-FR', 'de-DE');
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'language');
            await take(page, 'settings');
            await enterSection(page, 'captions');
            await press(page, 'ArrowDown', 'Enter');
            await page.getByRole('dialog').waitFor();
            await press(page, 'ArrowDown', 'Enter');
            await expectStatus(page, 'captionsFontSize', 'accepted', 'Saved');
            await take(page, 'settings-captions');
        },
        { viewport: small },
    );
});

test('an edit in conflict', async () => {
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'device');
            await press(page, 'Enter');
            await typeOver(page, 'Den');
            await host.control('set', 'deviceName', 'Living room');
            await page.locator('.conflict').waitFor();
            await take(page, 'settings-conflict');
        },
        { viewport: small },
    );
});

test('the settings from right to left', async () => {
    await host.setLocales('ar-EG');
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'voice', 'ArrowLeft');
            await take(page, 'settings-arabic');
        },
        { viewport: small },
    );
});

test('the simulated TV', async () => {
    await visit(
        host,
        async (page) => {
            await page.getByText('● Connected').waitFor();
            await host.control('device', 'captions', 'on');
            await host.control('set', 'deviceName', 'Attic');
            await page.getByRole('listbox').getByRole('option').filter({ hasText: 'changed: Attic' }).click();
            await page.getByRole('region', { name: 'Answer' }).waitFor();
            await take(page, 'device');
        },
        { path: '/device', viewport: wide },
    );
});
