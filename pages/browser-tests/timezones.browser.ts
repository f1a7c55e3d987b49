import { readFileSync } from 'node:fs';

import type { Page } from 'playwright-core';
import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { hostOfFile } from './host';
import { enterSection, expectFocus, expectStatus, focus, goDownTo, press, row, visitSettings } from './settings';
import { expectNoSidewaysScroll, hostIsAway, phone, small } from './visit';

/** Choosing a time zone as a person does, with a remote control or a keyboard. */

const host = hostOfFile();

async function openTimeZones(page: Page, forward = 'ArrowRight'): Promise<void> {
    await enterSection(page, 'language', forward);
    await goDownTo(page, 'timezone');
    await press(page, 'Enter');
    await page.getByRole('dialog').getByRole('textbox').waitFor();
}

async function expectZone(zone: string): Promise<void> {
    await expect.poll(() => host.value('timezone')).toBe(zone);
}

/** The cities that the panel shows, from the top. */
function cities(page: Page): Promise<string[]> {
    return page.getByRole('dialog').locator('.zone .name bdi:first-child').allInnerTexts();
}

test('a region, then a city: the arrows and the letters lead to it, and each city has its local time', async () => {
    await host.control('set', 'timezone', 'America/Vancouver');
    await visitSettings(host, async (page) => {
        const files: string[] = [];
        page.on('request', (request) => files.push(new URL(request.url()).pathname));
        expect(files.filter((file) => file.startsWith('/timezones/'))).toEqual([]);
        await enterSection(page, 'language');
        await row(page, 'timezone')
            .getByText(/^Vancouver · \d+:\d\d/)
            .waitFor();
        await openTimeZones(page);
        expect(files.filter((file) => file.startsWith('/timezones/'))).toEqual(['/timezones/en.json']);
        // The present zone comes first and has the focus.
        await expectFocus(page, 'America/Vancouver');
        expect(await row(page, 'America/Vancouver').getByRole('button').getAttribute('aria-pressed')).toBe('true');
        await expect.poll(() => row(page, 'America/Vancouver').innerText()).toMatch(/Vancouver\s+Canada\s+\w{3} \d/);
        await expectAccessible(page, 'the regions');

        await press(page, 'ArrowDown', 'ArrowDown', 'ArrowDown', 'ArrowDown');
        await expectFocus(page, 'Asia');
        await press(page, 'Enter');
        await expectFocus(page, 'Asia/Aden');
        await expectAccessible(page, 'the cities of Asia');
        await press(page, 'ArrowRight', 'ArrowDown', 'ArrowDown', 'ArrowDown', 'ArrowDown');
        expect((await focus(page)).name).toBe('K');
        await press(page, 'ArrowLeft');
        await press(page, ...Array<string>(6).fill('ArrowDown'));
        expect((await focus(page)).name).toContain('Kolkata');
        await press(page, 'Enter');
        await expectStatus(page, 'timezone', 'accepted', 'Saved');
        await expectFocus(page, 'timezone');
        await row(page, 'timezone').getByText('Kolkata').waitFor();
        await expectZone('Asia/Kolkata');
    });
});

test('what a person types finds the city by its name, its country and older names', async () => {
    await host.control('set', 'timezone', 'Asia/Tokyo');
    await visitSettings(host, async (page) => {
        await openTimeZones(page);
        // Typing leads into the search from anywhere in the panel.
        await page.keyboard.type('germany');
        await expectFocus(page, 'search');
        await expect.poll(() => cities(page)).toEqual(['Berlin', 'Büsingen']);
        for (const [typed, city] of [
            ['uk', 'London'],
            ['kyiv', 'Kyiv'],
            ['東京', 'Tokyo'],
            ['Moskau', 'Moscow'],
            ['kolkata', 'Kolkata'],
        ] as const) {
            await page.getByRole('textbox').fill(typed);
            await expect.poll(async () => (await cities(page))[0]).toBe(city);
        }
        await expectAccessible(page, 'what the search found');
        await page.getByRole('textbox').fill('xyzzy');
        await page.getByText('No results').waitFor();
        await page.getByRole('textbox').fill('calcutta');
        await press(page, 'Enter');
        await expectFocus(page, 'Asia/Kolkata');
        await press(page, 'Enter');
        await expectStatus(page, 'timezone', 'accepted', 'Saved');
        await expectZone('Asia/Kolkata');
    });
});

test.each(['Asia/Calcutta', 'Asia/Kolkata'])('a TV on %s is in Kolkata, and stays on that identifier', async (zone) => {
    await host.control('device', 'timezone', zone);
    await visitSettings(host, async (page) => {
        await openTimeZones(page);
        await expectFocus(page, 'Asia/Kolkata');
        expect((await focus(page)).name).toContain('Kolkata');
        expect(await page.locator('body').innerText()).not.toContain('Calcutta');
        await press(page, 'ArrowDown', 'ArrowDown', 'ArrowDown', 'ArrowDown', 'Enter');
        await expectFocus(page, 'Asia/Kolkata');
        await press(page, 'Enter');
        await expectStatus(page, 'timezone', 'unchanged', 'No change');
        await expectZone(zone);
    });
});

/** Opens the panel and presses keys; only then its request for the cities is answered. */
async function pressWhileCitiesLoad(page: Page, keys: readonly string[]): Promise<void> {
    let answer: () => void = () => undefined;
    const isOver = new Promise<void>((resolve) => {
        answer = resolve;
    });
    await page.route('**/timezones/**', async (route) => {
        await isOver;
        await route.continue();
    });
    await enterSection(page, 'language');
    await goDownTo(page, 'timezone');
    await press(page, 'Enter');
    await page.getByRole('dialog').getByText('Loading').waitFor();
    await press(page, ...keys);
    answer();
}

test.each([
    [
        'what is typed, and the arrows and Enter after it',
        'Asia/Tokyo',
        ['ArrowDown', 't', 'o', 'k', 'y', 'o', 'ArrowDown', 'Enter'],
    ],
    [
        'arrows and Enter, through a region to its city',
        'Africa/Accra',
        ['ArrowDown', 'Enter', 'ArrowDown', 'ArrowDown', 'ArrowUp', 'Enter'],
    ],
    ['an Enter too many, which keeps the zone', 'America/Vancouver', ['Enter']],
])('while the cities are loaded nothing is lost: %s', async (_name, zone, keys) => {
    await host.control('set', 'timezone', 'America/Vancouver');
    await visitSettings(
        host,
        async (page) => {
            await pressWhileCitiesLoad(page, keys);
            await page.getByRole('dialog').waitFor({ state: 'detached' });
            await expectFocus(page, 'timezone');
            await expectZone(zone);
        },
        // A tab of its own, which has not kept the file, and whose requests may wait.
        { prepare: () => Promise.resolve() },
    );
});

test('Back leads from the cities to the regions, then out of the panel', async () => {
    await host.control('set', 'timezone', 'America/Vancouver');
    await visitSettings(host, async (page) => {
        await openTimeZones(page);
        await press(page, 'ArrowDown', 'Enter');
        await expectFocus(page, 'Africa/Abidjan');
        await press(page, 'Escape');
        await expectFocus(page, 'Africa');
        await press(page, 'ArrowDown', 'Enter');
        // The region of the present zone opens on it.
        await expectFocus(page, 'America/Vancouver');
        await press(page, 'ArrowRight', 'ArrowLeft', 'ArrowLeft');
        await expectFocus(page, 'North America');
        await press(page, 'Escape');
        await page.getByRole('dialog').waitFor({ state: 'detached' });
        await expectFocus(page, 'timezone');
        await expectZone('America/Vancouver');
    });
});

test('in Arabic and in Japanese the cities have their names, and the arrows the direction of the writing', async () => {
    await host.setLocales('ar-EG');
    await host.control('set', 'timezone', 'Africa/Cairo');
    await visitSettings(host, async (page) => {
        await openTimeZones(page, 'ArrowLeft');
        await row(page, 'Africa/Cairo').getByText('القاهرة').waitFor();
        await press(page, 'ArrowDown', 'Enter');
        await expectFocus(page, 'Africa/Cairo');
        await press(page, 'ArrowLeft');
        expect((await focus(page)).row).toMatch(/^letter /);
        await expectAccessible(page, 'the cities of Africa in Arabic');
        await press(page, 'ArrowRight', 'ArrowRight');
        await expectFocus(page, 'أفريقيا');
        await press(page, 'Escape');
        await page.setViewportSize(phone);
        await host.setLocales('ja-JP');
        await page.locator('html[lang="ja"]').waitFor();
        await row(page, 'timezone').getByRole('button').click();
        await page.getByRole('button', { name: 'アジア' }).click();
        await page.getByRole('button', { name: '漢字' }).click();
        await expectNoSidewaysScroll(page);
        await page.getByRole('button', { name: '東京' }).click();
        await expectZone('Asia/Tokyo');
    });
    await host.setLocales('en-US');
});

test('what the TV reports is shown even if it is no time zone of the list', async () => {
    await visitSettings(
        host,
        async (page) => {
            for (const [zone, name] of [
                ['Etc/GMT+5', 'GMT-05:00'],
                ['Not/A_Zone', 'Not/A_Zone'],
            ] as const) {
                await host.control('device', 'timezone', zone);
                await openTimeZones(page);
                await expectFocus(page, 'present');
                expect((await focus(page)).name).toContain(name);
                await press(page, 'Enter');
                await page.getByRole('dialog').waitFor({ state: 'detached' });
                await expectZone(zone);
            }
        },
        { viewport: small },
    );
});

test('cities that could not be loaded are loaded on request', async () => {
    await host.control('set', 'timezone', 'America/Vancouver');
    await visitSettings(
        host,
        async (page) => {
            await page.route('**/timezones/**', (route) => route.abort());
            await enterSection(page, 'language');
            await goDownTo(page, 'timezone');
            await press(page, 'Enter');
            await page.getByText('The TV is not responding. Try again.').waitFor();
            await page.unroute('**/timezones/**');
            await press(page, 'Enter');
            await expectFocus(page, 'America/Vancouver');
        },
        { expected: hostIsAway },
    );
});

test('the licence of the cities’ names is served beside them', async () => {
    const answer = await fetch(new URL('/timezones/LICENSE.txt' + new URL(host.page('/')).search, host.page('/')));
    expect(await answer.text()).toBe(readFileSync('node_modules/cldr-core/LICENSE', 'utf8'));
});
