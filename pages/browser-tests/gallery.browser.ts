import { mkdtemp, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

import { build } from 'vite';
import { afterAll, beforeAll, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { Host } from './host';
import { expectLooksAsStored } from './screenshots';
import { visit } from './visit';

/** Every component in every state, in every theme. */

let folder = '';
let host: Host;

beforeAll(async () => {
    folder = await mkdtemp(join(tmpdir(), 'settings-gallery-'));
    await build({ mode: 'gallery', logLevel: 'error', build: { outDir: folder, emptyOutDir: true } });
    host = new Host(folder);
    await host.start();
});

afterAll(async () => {
    await host.stop();
    await rm(folder, { recursive: true });
});

test('every component looks as stored in every theme, and axe-core finds nothing', async () => {
    await visit(
        host,
        async (page) => {
            for (const [name, media] of [
                ['dark', {}],
                ['light', { colorScheme: 'light' }],
                ['contrast', { colorScheme: 'light', contrast: 'more' }],
                ['forced', { colorScheme: 'dark', forcedColors: 'active', contrast: 'no-preference' }],
            ] as const) {
                await page.emulateMedia(media);
                await page.locator('figure').first().waitFor();
                await expectAccessible(page, `the components, ${name}`);
                await expectLooksAsStored(page, `components-${name}`);
            }
        },
        { path: '/gallery.html', viewport: { width: 1280, height: 1700 } },
    );
});
