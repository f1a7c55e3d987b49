import { existsSync, mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

import pixelmatch from 'pixelmatch';
import type { Page } from 'playwright-core';
import { PNG } from 'pngjs';
import { expect } from 'vitest';

import { failures } from './programs';
import { smallPng } from './smallPng';

const stored = fileURLToPath(new URL('screenshots', import.meta.url));
/** How far a colour may be off before its pixel counts; the stored pictures have fewer colours than the page. */
const colourTolerance = 0.05;
/** The share of pixels that may be off. A row that moved by two pixels changes more. */
const pixelTolerance = 0.0005;
/** The port of the host, the local time of a city, and how long ago a change was. */
const varying = '[data-row="address"] .value, .zone .value, .time, .change { display: none !important }';

/** Applies style rules to all that the page has and will have, in place of those of the call before. */
async function applyStyle(page: Page, style: string): Promise<void> {
    await page.evaluate((rules) => {
        const sheet = new CSSStyleSheet();
        sheet.replaceSync(rules);
        // The page allows no style elements.
        document.adoptedStyleSheets = [sheet];
    }, style);
}

/** Compares the page with the stored picture; with UPDATE_SCREENSHOTS set, stores it instead. */
export async function expectLooksAsStored(page: Page, name: string): Promise<void> {
    const file = `${name}.png`;
    await applyStyle(page, varying);
    const picture = await page.screenshot({ animations: 'disabled', caret: 'hide' });
    await applyStyle(page, '');
    if (process.env['UPDATE_SCREENSHOTS'] !== undefined) {
        mkdirSync(stored, { recursive: true });
        writeFileSync(join(stored, file), smallPng(picture));
        return;
    }
    expect(existsSync(join(stored, file)), `there is a stored ${file}; "npm run update-screenshots" makes it`).toBe(
        true,
    );
    const actual = PNG.sync.read(picture);
    const wanted = PNG.sync.read(readFileSync(join(stored, file)));
    expect([actual.width, actual.height]).toEqual([wanted.width, wanted.height]);
    const difference = new PNG({ width: actual.width, height: actual.height });
    const off = pixelmatch(wanted.data, actual.data, difference.data, actual.width, actual.height, {
        threshold: colourTolerance,
    });
    const [actualFile, differenceFile] = [join(failures, file), join(failures, `${name}-difference.png`)];
    if (off <= actual.width * actual.height * pixelTolerance) {
        rmSync(actualFile, { force: true });
        rmSync(differenceFile, { force: true });
        return;
    }
    mkdirSync(failures, { recursive: true });
    writeFileSync(actualFile, picture);
    writeFileSync(differenceFile, PNG.sync.write(difference));
    expect.fail(`${off} pixels differ from the stored ${file}; see ${differenceFile}`);
}
