import { expect, test } from 'vitest';

import { hostOfEachTest, type Host } from './host';
import { Person } from './person';
import { visitSettings } from './settings';

/** How many key presses common tasks take from the page as it opens: arrows, Enter and Back, not the letters of a text. */

const host = hostOfEachTest();

interface Task {
    readonly name: string;
    readonly presses: number;
    readonly prepare?: (host: Host) => Promise<unknown>;
    readonly act: (person: Person) => Promise<unknown>;
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
        presses: 10,
        act: async (person) => {
            await person.press('Down', 'Right');
            await person.pressUntil('Down', 'add');
            await person.press('Enter');
            await person.isAt('ja-JP');
            await person.pressUntil('Up', 'el-GR');
            await person.pressUntil('Left', 'fr');
            await person.press('Enter');
            await person.sees('Canadian French');
            await person.pressUntil('Right', 'fr-FR');
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
            await person.sees('Oceania');
            await person.pressUntil('Down', 'Oceania');
            await person.press('Enter');
            await person.sees('Auckland');
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
    {
        name: 'undo the last change',
        presses: 8,
        prepare: (host) => host.control('set', 'deviceName', 'Den'),
        act: async (person) => {
            await person.pressUntil('Down', 'changes');
            await person.press('Right', 'Right', 'Enter');
            await expect.poll(() => host.value('deviceName')).toBe('TV');
        },
    },
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
    {
        name: 'find the version',
        presses: 6,
        act: async (person) => {
            await person.pressUntil('Down', 'about');
            await person.sees(/^Version \d/);
        },
    },
];

test('ten common tasks take so many key presses', async () => {
    const counted: Record<string, number> = {};
    for (const { name, prepare, act } of tasks) {
        await host.stop();
        await host.start();
        await prepare?.(host);
        await visitSettings(host, async (page) => {
            const person = new Person(page);
            await person.pressUntil('Up', 'device');
            person.presses = 0;
            await act(person);
            counted[name] = person.presses;
        });
    }
    expect(counted).toEqual(Object.fromEntries(tasks.map(({ name, presses }) => [name, presses])));
});
