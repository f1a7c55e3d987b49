import { mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

import type { Page } from 'playwright-core';
import { afterAll, beforeAll, test } from 'vitest';

import { Host } from './host';
import { smallPng } from './smallPng';
import { small, visit } from './visit';

const images = fileURLToPath(new URL('../../docs/images', import.meta.url));

let host: Host;

beforeAll(async () => {
    mkdirSync(images, { recursive: true });
    host = await Host.start();
});

afterAll(() => host.stop());

async function take(page: Page, name: string): Promise<void> {
    writeFileSync(join(images, `${name}.png`), smallPng(await page.screenshot({ caret: 'hide' })));
}

test('the simulated television', async () => {
    await visit(
        host,
        async (page) => {
            await page.getByText('● Connected').waitFor();
            await host.control('device', 'captions', 'on');
            await host.control('set', 'deviceName', 'Living room');
            const event = page.getByRole('listbox').getByRole('option').filter({ hasText: 'event' });
            await event.click();
            await take(page, 'device');
        },
        { path: '/device', viewport: small },
    );
});
