import type { Locator, Page } from 'playwright-core';

import type { SectionId } from '../src/sections/rows';
import { enterSection, expectFocus, goDownTo, press } from './settings';

const keys = {
    Up: 'ArrowUp',
    Down: 'ArrowDown',
    Left: 'ArrowLeft',
    Right: 'ArrowRight',
    Enter: 'Enter',
    Back: 'Escape',
} as const;

/** Somebody with a remote control in front of a page. */
export class Person {
    constructor(readonly page: Page) {}

    async press(...names: readonly (keyof typeof keys)[]): Promise<void> {
        await press(this.page, ...names.map((name) => keys[name]));
    }

    /** Waits until these words are on the screen. */
    async sees(words: string | RegExp): Promise<void> {
        await this.page.getByText(words).filter({ visible: true }).first().waitFor();
    }

    async doesNotSee(words: string | RegExp): Promise<void> {
        await this.page.getByText(words).filter({ visible: true }).first().waitFor({ state: 'detached' });
    }

    /** Waits until the focus is on this row. */
    async isAt(row: string): Promise<void> {
        await expectFocus(this.page, row);
    }

    async goesInto(section: SectionId): Promise<void> {
        await enterSection(this.page, section);
    }

    async goesDownTo(row: string): Promise<void> {
        await goDownTo(this.page, row);
    }

    get focused(): Locator {
        return this.page.locator(':focus');
    }
}
