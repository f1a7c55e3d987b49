import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';

import type { AxeResults } from 'axe-core';
import type { Page } from 'playwright-core';
import { expect } from 'vitest';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

const rules = ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'];

/**
 * Checks that axe-core finds nothing in the page. `colours`: whether it computes contrasts, too, which takes half of the
 * time; no need where only the words differ from a view that is checked elsewhere.
 */
export async function expectAccessible(page: Page, view: string, { colours = true } = {}): Promise<void> {
    if (!(await page.evaluate(() => 'axe' in window))) {
        await page.evaluate(axe);
    }
    const { violations } = await page.evaluate(
        ([values, enabled]): Promise<AxeResults> =>
            (window as unknown as { axe: typeof import('axe-core') }).axe.run(document, {
                runOnly: { type: 'tag', values },
                rules: { 'color-contrast': { enabled } },
                resultTypes: ['violations'],
                preload: false,
            }),
        [rules, colours] as const,
    );
    const found = violations.flatMap(({ id, nodes }) =>
        nodes.map(({ html, failureSummary }) => `${id}: ${html} ${failureSummary}`),
    );
    expect.soft(found, `axe-core on ${view}`).toEqual([]);
}
