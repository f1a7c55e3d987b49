import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { hostOfEachTest } from './host';
import { enterSection, expectFocus, expectStatus, goDownTo, press, row, visitSettings } from './settings';

const host = hostOfEachTest();

test('the colours and sizes of captions are samples in a list, and the preview beside it follows the focus', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'captions');
        await goDownTo(page, 'captionsStyles');
        await press(page, 'Enter');
        const panel = page.getByRole('dialog');
        const looks = await panel
            .getByRole('radio')
            .locator('.sample')
            .evaluateAll((samples) =>
                samples.map((sample) => {
                    const { color, backgroundColor } = getComputedStyle(sample);
                    return `${sample.textContent}: ${color} on ${backgroundColor}`;
                }),
            );
        expect(looks).toEqual([
            'White on black: rgb(255, 255, 255) on rgb(0, 0, 0)',
            'Black on white: rgb(0, 0, 0) on rgb(255, 255, 255)',
            'Yellow on black: rgb(255, 255, 0) on rgb(0, 0, 0)',
            'Yellow on blue: rgb(255, 255, 0) on rgb(0, 0, 255)',
        ]);
        const preview = panel.locator('.scene .sample');
        const colour = () => preview.evaluate((text) => getComputedStyle(text).backgroundColor);
        await expectFocus(page, 'STYLE_WHITE_ON_BLACK');
        await press(page, 'ArrowDown', 'ArrowDown', 'ArrowDown');
        await expect.poll(colour).toBe('rgb(0, 0, 255)');
        expect(await host.value('captionsStyles')).toBe('STYLE_WHITE_ON_BLACK');
        await expectAccessible(page, 'the colours of captions');
        await press(page, 'Enter');
        await expectStatus(page, 'captionsStyles', 'accepted', 'Saved');
        expect(await host.value('captionsStyles')).toBe('STYLE_YELLOW_ON_BLUE');

        await press(page, 'ArrowUp', 'Enter');
        const size = () => preview.evaluate((text) => parseFloat(getComputedStyle(text).fontSize));
        const medium = await size();
        await press(page, 'ArrowDown', 'ArrowDown');
        await expect.poll(size).toBeGreaterThan(1.5 * medium);
        // The colour that was just set.
        expect(await colour()).toBe('rgb(0, 0, 255)');
        await expectAccessible(page, 'the sizes of captions');
    });
});

test.each([
    ['captions', 'captionsEnabled', 'captions', /captions button on the TV’s remote/],
    ['voice', 'doNotDisturbEnabled', 'do-not-disturb', /look for Do not disturb/],
] as const)(
    'in %s the page says how %s is changed, and shows the change when it comes',
    async (section, key, command, how) => {
        await visitSettings(host, async (page) => {
            await enterSection(page, section);
            await goDownTo(page, key);
            await row(page, key).getByText(how).waitFor();
            await press(page, 'Enter');
            const panel = page.getByRole('dialog');
            await panel.getByText(how).waitFor();
            const now = panel.getByRole('status');
            await now.getByText('Off').waitFor();
            await expectAccessible(page, `how ${key} is changed`);
            await host.control('device', command, 'on');
            await now.getByText('On').waitFor();
            await press(page, 'Escape');
            await expectFocus(page, key);
            await row(page, key).locator('.value').getByText('On').waitFor();
        });
    },
);
