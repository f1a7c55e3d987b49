import type { Locator, Page } from 'playwright-core';
import { expect } from 'vitest';

import type { SectionId } from '../src/sections/rows';
import type { Host } from './host';
import { visit, type VisitOptions } from './visit';

export const sectionIds = ['search', 'device', 'language', 'captions', 'voice', 'account', 'changes', 'about'] as const;

/** A language of the pages, and a locale of the assistant that selects it. */
export const languages = [
    ['en', 'en-US'],
    ['fr', 'fr-FR'],
    ['es', 'es-MX'],
    ['de', 'de-DE'],
    ['ja', 'ja-JP'],
    ['ar', 'ar-EG'],
] as const;

export async function visitSettings(
    host: Host,
    use: (page: Page) => Promise<void>,
    options: VisitOptions = {},
): Promise<void> {
    await visit(
        host,
        async (page) => {
            await row(page, 'deviceName').waitFor();
            await use(page);
        },
        options,
    );
}

export function row(page: Page, name: string): Locator {
    return page.locator(`[data-row="${name}"]`).first();
}

/** Waits until the row shows this result of a change. */
export async function expectStatus(page: Page, name: string, kind: string, words: string | RegExp): Promise<void> {
    await row(page, name).locator(`.status[data-kind="${kind}"]`, { hasText: words }).waitFor();
}

export async function expectValue(page: Page, name: string, value: string): Promise<void> {
    await row(page, name).locator('.value').getByText(value, { exact: true }).waitFor();
}

export async function press(page: Page, ...keys: readonly string[]): Promise<void> {
    // Not one after the other: each would wait for the browser before the next is sent.
    await Promise.all(keys.flatMap((key) => [page.keyboard.down(key), page.keyboard.up(key)]));
}

/** The row and the name of the focused control. */
export async function focus(page: Page): Promise<{ readonly row: string; readonly name: string }> {
    return page.evaluate(() => {
        const element = document.activeElement;
        return {
            row: element?.closest<HTMLElement>('[data-row]')?.dataset['row'] ?? '',
            name: (element?.getAttribute('aria-label') ?? element?.textContent ?? '').trim(),
        };
    });
}

export async function expectFocus(page: Page, wanted: string): Promise<void> {
    await expect.poll(async () => (await focus(page)).row, { interval: 20 }).toBe(wanted);
}

/** Whether the menu is a strip above the list. */
function isNarrow(page: Page): boolean {
    return (page.viewportSize()?.width ?? 0) < 900;
}

/** Moves the focus to a section in the menu, by keys only. */
export async function goToMenu(page: Page, section: SectionId): Promise<void> {
    const look = () =>
        page.evaluate(() => ({
            from: document.querySelector<HTMLElement>('nav [data-row]:focus-within')?.dataset['row'],
            isMirrored: document.documentElement.dir === 'rtl',
        }));
    let { from, isMirrored } = await look();
    if (from === undefined) {
        await press(page, 'Escape');
        ({ from, isMirrored } = await look());
    }
    const steps = sectionIds.indexOf(section) - sectionIds.indexOf(from as SectionId);
    const isBackward = steps < 0;
    const sideways = isBackward === isMirrored ? 'ArrowRight' : 'ArrowLeft';
    const key = isNarrow(page) ? sideways : isBackward ? 'ArrowUp' : 'ArrowDown';
    await press(page, ...Array<string>(Math.abs(steps)).fill(key));
    await expectFocus(page, section);
}

/** Moves the focus into a section, by keys only. */
export async function enterSection(page: Page, section: SectionId, forward = 'ArrowRight'): Promise<void> {
    await goToMenu(page, section);
    await press(page, isNarrow(page) ? 'Enter' : forward);
    await page.locator('main :focus').waitFor();
}

/** Moves the focus down the rows of a section until it is on this one. */
export async function goDownTo(page: Page, name: string): Promise<void> {
    const rows = await page.locator('main [data-row]').count();
    for (let steps = 0; steps < rows && (await focus(page)).row !== name; ++steps) {
        await press(page, 'ArrowDown');
    }
    await expectFocus(page, name);
}

/** Opens the panel of the focused row and chooses the option that is `steps` below the chosen one. */
export async function choose(page: Page, steps: number): Promise<void> {
    await press(page, 'Enter');
    await page.getByRole('dialog').waitFor();
    await press(page, ...Array<string>(steps).fill('ArrowDown'), 'Enter');
    await page.getByRole('dialog').waitFor({ state: 'detached' });
}

/** Replaces the text of the focused field. */
export async function typeOver(page: Page, text: string): Promise<void> {
    await page.keyboard.press('Control+A');
    await page.keyboard.type(text);
}
