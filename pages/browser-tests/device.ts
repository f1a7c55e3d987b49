import type { Locator, Page } from 'playwright-core';
import { expect } from 'vitest';

import type { Host } from './host';
import { press } from './settings';
import { visit, type VisitOptions } from './visit';

/** A developer in front of the simulated TV. */
export class Developer {
    constructor(readonly page: Page) {}

    /** Presses keys; an arrow is called after its direction. */
    press(...keys: readonly string[]): Promise<void> {
        return press(this.page, ...keys.map((key) => (/^(Up|Down|Left|Right)$/.test(key) ? `Arrow${key}` : key)));
    }

    /** Goes on by Tab until `name` has the focus. */
    async goesTo(name: string): Promise<void> {
        for (let presses = 0; presses < 60; presses += 1) {
            await this.press('Tab');
            if ((await this.focus()).startsWith(name)) {
                return;
            }
        }
        expect.fail(`${name} is not reached by Tab`);
    }

    types(text: string): Promise<void> {
        return this.page.keyboard.type(text);
    }

    async uses(button: string): Promise<void> {
        await this.page.getByRole('button', { name: button, exact: true }).click();
    }

    async switches(name: string): Promise<void> {
        await this.page.getByRole('switch', { name }).click();
    }

    /** Waits for words anywhere on the page. */
    async sees(words: string | RegExp): Promise<void> {
        await this.page.getByText(words).first().waitFor();
    }

    /** Waits for the result of the last command. */
    async seesResult(words: string): Promise<void> {
        await this.page.locator('.device-result', { hasText: words }).waitFor();
    }

    async seesState(fact: string, value: string): Promise<void> {
        await this.page.locator('.device-state > div', { hasText: fact }).getByText(value, { exact: true }).waitFor();
    }

    /** Waits for a line with these words. */
    async seesMessage(words: string | RegExp): Promise<void> {
        await this.lines(words).first().waitFor();
    }

    /** The lines of the list, or those with these words. */
    lines(words?: string | RegExp): Locator {
        const all = this.list().getByRole('option', { disabled: false });
        return words === undefined ? all : all.filter({ hasText: words });
    }

    /** What the lines say, without their times and the numbers of connections. */
    async reads(): Promise<string[]> {
        const texts = await this.lines().evaluateAll((lines) =>
            lines.map((line) => [...line.children].slice(1).map((part) => part.textContent)),
        );
        return texts.map(([client = '', ...words]) => [client.replace(/\d+/, 'N'), ...words].join(' | '));
    }

    list(): Locator {
        return this.page.getByRole('listbox', { name: 'Messages' });
    }

    frame(name: 'Request' | 'Answer' | 'Frame'): Locator {
        return this.page.getByRole('region', { name, exact: true });
    }

    /** The name of what has the focus. */
    focus(): Promise<string> {
        return this.page.evaluate(() => {
            const element = document.activeElement;
            const label = (element as HTMLInputElement | null)?.labels?.[0]?.innerText ?? element?.textContent;
            return element?.getAttribute('aria-label') ?? label ?? '';
        });
    }

    async expectFocus(name: string): Promise<void> {
        await expect.poll(async () => (await this.focus()).startsWith(name), { message: name }).toBe(true);
    }

    async copied(): Promise<string> {
        return this.page.evaluate(() => navigator.clipboard.readText());
    }
}

/** Opens the page of the simulated TV and waits for its connection. */
export async function visitDevice(
    host: Host,
    use: (developer: Developer) => Promise<void>,
    options: VisitOptions = {},
): Promise<void> {
    await visit(
        host,
        async (page, context) => {
            await context.grantPermissions(['clipboard-read', 'clipboard-write']);
            await page.getByText('● Connected').waitFor();
            await use(new Developer(page));
        },
        { path: '/device', ...options },
    );
}
