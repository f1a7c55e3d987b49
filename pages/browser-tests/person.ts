import type { Locator, Page } from 'playwright-core';

import type { SectionId } from '../src/sections/rows';
import { enterSection, expectFocus, focus, goDownTo, press, typeOver } from './settings';

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
    /** How often a key was pressed. */
    presses = 0;

    constructor(readonly page: Page) {}

    async press(...names: readonly (keyof typeof keys)[]): Promise<void> {
        this.presses += names.length;
        await press(this.page, ...names.map((name) => keys[name]));
    }

    /** Presses one key until the focus is on this row. */
    async pressUntil(name: keyof typeof keys, row: string): Promise<void> {
        for (let steps = 0; steps < 500 && (await focus(this.page)).row !== row; steps += 1) {
            await this.press(name);
        }
        await this.isAt(row);
    }

    /** Replaces the text of the focused field; letters are not counted, because they are up to the keyboard of the TV. */
    async type(text: string): Promise<void> {
        await typeOver(this.page, text);
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
