import { expect, test } from 'vitest';

import { expectArrowsLead } from './arrows';
import { hostOfFile } from './host';
import {
    choose,
    enterSection,
    expectFocus,
    expectStatus,
    expectValue,
    focus,
    goDownTo,
    goToMenu,
    press,
    row,
    sectionIds,
    typeOver,
    visitSettings,
} from './settings';
import { phone, small } from './visit';

const host = hostOfFile();

test('the menu has the focus first, shows each section and stops at its ends', async () => {
    await visitSettings(host, async (page) => {
        await expectFocus(page, 'device');
        await press(page, 'ArrowUp', 'ArrowUp');
        await expectFocus(page, 'search');
        for (const section of sectionIds.slice(1)) {
            await press(page, 'ArrowDown');
            await expectFocus(page, section);
            const { name } = await focus(page);
            await page.locator('main h2', { hasText: name.replace(/^\W/, '') }).waitFor();
        }
        await press(page, 'ArrowDown');
        await expectFocus(page, 'about');
    });
});

test.each([
    ['a TV', small],
    ['a phone', phone],
])(
    'on %s every arrow leads to what is drawn there, arrows reach every control, and Back leads to the menu',
    async (_name, viewport) => {
        await host.setLocales('en-US', 'fr-FR', 'de-DE');
        await visitSettings(
            host,
            async (page) => {
                for (const section of sectionIds) {
                    await enterSection(page, section);
                    await expectArrowsLead(page, section, { zones: ['nav', 'main'], from: ['main'] });
                    await enterSection(page, section);
                    await press(page, 'Escape');
                    await expectFocus(page, section);
                }
            },
            { viewport },
        );
    },
);

test('each section remembers its focus', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'device');
        await press(page, 'ArrowDown', 'ArrowDown');
        await expectFocus(page, 'companionDevice');
        await enterSection(page, 'voice');
        await goDownTo(page, 'handsFreeAlwaysOnEnabled');
        await enterSection(page, 'device');
        await expectFocus(page, 'companionDevice');
        await enterSection(page, 'voice');
        await expectFocus(page, 'handsFreeAlwaysOnEnabled');
    });
});

test('Device by keys: the names and the companion device are changed, and Escape leaves a name unchanged', async () => {
    await visitSettings(host, async (page) => {
        await press(page, 'ArrowRight', 'Enter');
        await typeOver(page, 'Living rxxm');
        await press(page, 'ArrowLeft', 'Backspace', 'Backspace');
        await page.keyboard.type('oo');
        await press(page, 'Enter');
        await expectStatus(page, 'deviceName', 'accepted', 'Saved');
        await expectFocus(page, 'deviceName');
        expect(await host.value('deviceName')).toBe('Living room');

        await press(page, 'ArrowDown', 'Enter');
        await typeOver(page, 'Nobody');
        await press(page, 'Escape');
        await expectFocus(page, 'friendlyName');
        await expectValue(page, 'friendlyName', 'TV');
        await press(page, 'Enter');
        await typeOver(page, 'Big screen');
        await press(page, 'Enter');
        await expectStatus(page, 'friendlyName', 'accepted', 'Saved');

        await press(page, 'ArrowDown', 'Enter');
        await typeOver(page, 'My phone');
        await press(page, 'ArrowDown');
        await typeOver(page, 'Phone');
        await press(page, 'Enter');
        await expectStatus(page, 'companionDevice', 'accepted', 'Saved');
        await expectValue(page, 'companionDevice', 'My phone · Phone');
        await expectFocus(page, 'companionDevice');
    });
    expect([await host.value('friendlyName'), await host.value('companionDevice')]).toEqual([
        'Big screen',
        '["My phone","Phone"]',
    ]);
});

test('Language and region by keys: locales are added, moved and removed, and a time zone is searched', async () => {
    await host.setLocales('en-US', 'de-DE');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await expectFocus(page, 'en-US');
        await press(page, 'ArrowDown');
        await expectFocus(page, 'de-DE');
        await press(page, 'ArrowDown', 'Enter');
        await page.getByRole('dialog').waitFor();
        await page.keyboard.type('german aus');
        await press(page, 'ArrowDown', 'Enter');
        await row(page, 'de-AT').waitFor();
        await expectFocus(page, 'add');
        await expect.poll(() => host.value('orliaLocale')).toBe('["en-US","de-DE","de-AT"]');

        await press(page, 'ArrowUp');
        await expectFocus(page, 'de-AT');
        await press(page, 'Enter', 'Enter', 'ArrowUp', 'Enter');
        await expect.poll(() => host.value('orliaLocale')).toBe('["en-US","de-AT","de-DE"]');
        await expectFocus(page, 'de-AT');
        await press(page, 'Enter', 'ArrowDown', 'ArrowDown', 'Enter');
        await expect.poll(() => host.value('orliaLocale')).toBe('["en-US","de-DE"]');
        await expectFocus(page, 'de-DE');

        await goToMenu(page, 'language');
        await press(page, 'ArrowRight');
        await goDownTo(page, 'timezone');
        await press(page, 'Enter');
        await page.getByRole('dialog').waitFor();
        await page.keyboard.type('tokyo');
        await press(page, 'ArrowDown', 'Enter');
        await expectStatus(page, 'timezone', 'accepted', 'Saved');
        await expectFocus(page, 'timezone');
        expect(await host.value('timezone')).toBe('Asia/Tokyo');
    });
});

test('Escape leaves the search in a dialog, and the focus returns', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'language');
        await goDownTo(page, 'timezone');
        await press(page, 'Enter');
        await page.getByRole('dialog').waitFor();
        await page.keyboard.type('zzz');
        await page.getByText('No results').waitFor();
        await press(page, 'Escape');
        await page.getByRole('dialog').waitFor({ state: 'detached' });
        await expectFocus(page, 'timezone');
    });
});

test('Captions by keys: size and style change, and the preview with them', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'captions');
        await press(page, 'ArrowDown');
        await expectFocus(page, 'captionsFontSize');
        const preview = page.getByText('Captions will look like this.');
        const height = () => preview.evaluate((text) => parseFloat(getComputedStyle(text).fontSize));
        const before = await height();
        await choose(page, 2);
        await expectFocus(page, 'captionsFontSize');
        await expectStatus(page, 'captionsFontSize', 'accepted', 'Saved');
        expect(await host.value('captionsFontSize')).toBe('FONT_EXTRA_LARGE');
        expect(await height()).toBeGreaterThan(before);
        await press(page, 'ArrowDown');
        await expectFocus(page, 'captionsStyles');
        await choose(page, 3);
        await expectStatus(page, 'captionsStyles', 'accepted', 'Saved');
        expect(await host.value('captionsStyles')).toBe('STYLE_YELLOW_ON_BLUE');
        expect(await preview.evaluate((text) => getComputedStyle(text).backgroundColor)).toBe('rgb(0, 0, 255)');
    });
});

test('Voice by keys: every switch is turned on', async () => {
    const switches = ['handsFreeEnabled', 'handsFreeAlwaysOnEnabled', 'pttAlwaysOnEnabled'];
    await visitSettings(host, async (page) => {
        await enterSection(page, 'voice');
        for (const name of switches) {
            await goDownTo(page, name);
            await press(page, 'Enter');
            await expectStatus(page, name, 'accepted', 'Saved');
        }
    });
    for (const name of switches) {
        expect(await host.value(name), name).toBe('true');
    }
});

test('Account by keys: the assistant’s settings are opened; a log-out is cancelled, then confirmed', async () => {
    await host.control('set', 'deviceName', 'Somebody’s');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'account');
        await press(page, 'ArrowDown', 'ArrowDown');
        await expectFocus(page, 'open-settings');
        await press(page, 'Enter');
        await page.getByText('Opened on the TV.').waitFor();
        await expect.poll(() => host.control('device', 'show')).toContain('lastLaunchedApp=voice-assistant-settings');

        await press(page, 'ArrowDown');
        await expectFocus(page, 'log-out');
        await press(page, 'Enter');
        await page.getByRole('dialog', { name: 'Log out of this TV?' }).waitFor();
        expect((await focus(page)).name).toBe('Cancel');
        await press(page, 'Enter');
        await page.getByRole('dialog').waitFor({ state: 'detached' });
        await expectFocus(page, 'log-out');
        expect(await host.value('deviceName')).toBe('Somebody’s');

        await press(page, 'Enter', 'ArrowRight');
        expect((await focus(page)).name).toBe('Log out');
        await press(page, 'Enter');
        await page.getByText('You are logged out.').waitFor();
        await expectFocus(page, 'log-out');
        await enterSection(page, 'device');
        await expectValue(page, 'deviceName', 'TV');
    });
    expect(await host.value('deviceName')).toBe('TV');
});

test('in Arabic the page is mirrored, and so are the arrows', async () => {
    await host.control('device', 'locale', 'ar-EG');
    await visitSettings(host, async (page) => {
        await page.locator('html[dir="rtl"][lang="ar"]').waitFor();
        const [menu, panel] = [await page.locator('nav').boundingBox(), await page.locator('main').boundingBox()];
        expect(menu?.x).toBeGreaterThan((panel?.x ?? 0) + (panel?.width ?? 0) - 1);
        await press(page, 'ArrowRight');
        await expectFocus(page, 'device');
        await press(page, 'ArrowLeft');
        await expectFocus(page, 'deviceName');
        await press(page, 'ArrowRight');
        await expectFocus(page, 'device');
    });
    await host.control('device', 'locale', 'en-US');
});
