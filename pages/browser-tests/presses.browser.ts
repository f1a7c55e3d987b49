import type { Page } from 'playwright-core';
import { expect, test } from 'vitest';

import { hostOfEachTest, type Host } from './host';
import { focus, press, visitSettings } from './settings';

/**
 * How many times a person presses a key of the remote control for common tasks, from the page as it opens. Arrows, Enter and
 * Back count; the letters of a text that is entered do not, because that is up to the keyboard of the TV.
 */

const host = hostOfEachTest();

/** A person with a remote control, who counts. */
class Person {
    presses = 0;

    constructor(private readonly page: Page) {}

    async press(...keys: readonly string[]): Promise<void> {
        this.presses += keys.length;
        await press(this.page, ...keys.map((key) => (/^(Up|Down|Left|Right)$/.test(key) ? `Arrow${key}` : key)));
    }

    /** Presses one key until what has the focus is on this row or has a name like this. */
    async pressUntil(key: string, wanted: string | RegExp): Promise<void> {
        for (let steps = 0; steps < 1_000; steps += 1) {
            const { row, name } = await focus(this.page);
            if (typeof wanted === 'string' ? row === wanted : wanted.test(name)) {
                return;
            }
            await this.press(key);
        }
        throw new Error(`${key} does not lead to ${wanted.toString()}`);
    }

    async type(text: string): Promise<void> {
        await this.page.keyboard.press('Control+A');
        await this.page.keyboard.type(text);
    }

    async sees(text: string | RegExp): Promise<void> {
        await this.page.getByText(text).first().waitFor();
    }
}

interface Task {
    readonly name: string;
    readonly presses: number;
    readonly prepare?: (host: Host) => Promise<unknown>;
    /** Absent: nobody can do it with the pages. */
    readonly act?: (person: Person) => Promise<unknown>;
}

const tasks: readonly Task[] = [
    {
        name: 'rename the TV',
        presses: 3,
        act: async (person) => {
            await person.press('Right', 'Enter');
            await person.type('Den');
            await person.press('Enter');
            await person.sees('Saved');
        },
    },
    {
        name: 'switch hands-free on',
        presses: 5,
        act: async (person) => {
            await person.pressUntil('Down', 'voice');
            await person.press('Right', 'Enter');
            await person.sees('Saved');
        },
    },
    {
        name: 'choose a captions size',
        presses: 7,
        act: async (person) => {
            await person.pressUntil('Down', 'captions');
            await person.press('Right');
            await person.pressUntil('Down', 'captionsFontSize');
            await person.press('Enter');
            await person.pressUntil('Down', 'FONT_LARGE');
            await person.press('Enter');
            await person.sees('Saved');
        },
    },
    {
        name: 'add a language',
        presses: 35,
        act: async (person) => {
            await person.press('Down', 'Right');
            await person.pressUntil('Down', 'add');
            await person.press('Enter');
            await person.pressUntil('Down', 'fr-FR');
            await person.press('Enter');
            await person.sees('Saved');
        },
    },
    {
        name: 'make the second language primary',
        presses: 6,
        prepare: (host) => host.setLocales('en-US', 'en-GB'),
        act: async (person) => {
            await person.press('Down', 'Right');
            await person.pressUntil('Down', 'en-GB');
            await person.press('Enter');
            await person.pressUntil('Down', 'primary');
            await person.press('Enter');
            await person.sees('Saved');
        },
    },
    {
        name: 'choose a time zone far away',
        presses: 15,
        act: async (person) => {
            await person.press('Down', 'Right');
            await person.pressUntil('Down', 'timezone');
            await person.press('Enter');
            await person.pressUntil('Down', 'Oceania');
            await person.press('Enter');
            await person.pressUntil('Down', 'Pacific/Auckland');
            await person.press('Enter');
            await person.sees('Saved');
        },
    },
    {
        name: 'find where do-not-disturb is set',
        presses: 5,
        act: async (person) => {
            await person.pressUntil('Down', 'voice');
            await person.press('Right');
            await person.pressUntil('Down', 'doNotDisturbEnabled');
            await person.sees('The TV itself changes this.');
        },
    },
    { name: 'undo the last change', presses: Infinity },
    {
        name: 'log out',
        presses: 11,
        act: async (person) => {
            await person.pressUntil('Down', 'account');
            await person.press('Right');
            await person.pressUntil('Down', 'log-out');
            await person.press('Enter', 'Right', 'Enter');
            await person.sees('You are logged out.');
        },
    },
    { name: 'find the version', presses: Infinity },
];

test('ten common tasks take no more key presses than these', async () => {
    const counted: Record<string, number> = {};
    for (const { name, prepare, act } of tasks) {
        await host.stop();
        await host.start();
        await prepare?.(host);
        await visitSettings(host, async (page) => {
            const person = new Person(page);
            await person.pressUntil('Up', 'device');
            person.presses = 0;
            await act?.(person);
            counted[name] = act === undefined ? Infinity : person.presses;
        });
    }
    expect(counted).toEqual(Object.fromEntries(tasks.map(({ name, presses }) => [name, presses])));
});
