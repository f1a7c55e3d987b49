import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { expectArrowsLead } from './arrows';
import { visitDevice } from './device';
import { hostOfFile } from './host';
import { expectNoSidewaysScroll, hostIsAway, phone, small, wide } from './visit';

const host = hostOfFile();

test.each([
    ['a wide screen', wide],
    ['a small screen', small],
    ['a phone', phone],
])('on %s every arrow leads to what is drawn there, and arrows reach every control', async (name, viewport) => {
    await visitDevice(
        host,
        async (developer) => {
            await host.control('device', 'captions', 'on');
            const zones = ['header', '.device-side', '.device-messages'];
            await developer.press('Down');
            await developer.page.locator('[data-row="switches"] :focus').waitFor();
            await developer.lines('captions on').click();
            await developer.frame('Answer').waitFor();
            await expectArrowsLead(developer.page, name, { zones, from: zones });
        },
        { viewport },
    );
});

test('arrows move within a text, the list and a frame before they leave it; Enter opens a choice', async () => {
    await visitDevice(
        host,
        async (developer) => {
            const { page } = developer;
            await page.getByLabel('Value', { exact: true }).fill('ab');
            await developer.press('Left', 'Left');
            await developer.expectFocus('Value');
            await developer.press('Left');
            await developer.expectFocus('System setting');

            await host.control('device', 'setting', 'deviceName', Array.from({ length: 200 }, String).join(' '));
            await expect.poll(() => developer.lines().count()).toBe(2);
            const chosen = async () => (await developer.list().getAttribute('aria-activedescendant')) ?? '';
            await developer.list().focus();
            await developer.press('Up');
            await expect.poll(chosen).not.toBe('');
            const newest = await chosen();
            await developer.press('Up');
            await expect.poll(chosen).not.toBe(newest);
            await developer.press('Up');
            await developer.expectFocus('Text');

            await developer.list().focus();
            await developer.press('Home', 'Enter');
            await developer.frame('Answer').waitFor();
            await developer.press('Enter');
            await developer.expectFocus('Request');
            await developer.press('Right');
            await developer.expectFocus('Answer');
            await developer.press('Left', 'Up', 'Up');
            await developer.expectFocus('Messages');

            const type = page.getByLabel('Type');
            await type.focus();
            await developer.press('Enter');
            await expect.poll(() => type.evaluate((choice) => choice.matches(':open'))).toBe(true);
            await developer.press('Down', 'Enter');
            await expect.poll(() => type.inputValue()).not.toBe('');
        },
        { viewport: wide },
    );
});

test('after the host was killed the page reconnects, reads the state again and keeps the list', async () => {
    await visitDevice(
        host,
        async (developer) => {
            await host.control('device', 'timezone', 'Europe/Madrid');
            await developer.seesState('timezone', 'Europe/Madrid');
            await host.kill();
            await developer.sees('○ Disconnected');
            await developer.switches('Captions');
            await developer.seesResult('refused, no-connection');
            await host.resume();
            await host.control('device', 'timezone', 'Europe/Lisbon');
            await developer.sees('● Connected');
            await developer.seesState('timezone', 'Europe/Lisbon');
            await developer.seesMessage('Europe/Madrid');
            await developer.switches('Captions');
            await developer.seesResult('done');
        },
        { expected: hostIsAway },
    );
});

test('a page that is no longer authorized says how to get a new address', async () => {
    await visitDevice(
        host,
        async (developer) => {
            await host.resumeAsNew();
            await developer.sees('Not authorized');
            await expectAccessible(developer.page, 'the device page that is locked out');
        },
        { expected: hostIsAway },
    );
});

test.each([small, phone])(
    'axe-core finds nothing at $width, dark and light, and nothing scrolls sideways',
    async (viewport) => {
        await visitDevice(
            host,
            async (developer) => {
                const { page } = developer;
                await expectAccessible(page, 'the empty device page');
                await host.control('device', 'setting', 'deviceName', 'x'.repeat(5_000));
                await host.settingsctl('set', 'captionsEnabled', 'true');
                await developer.switches('sdk-slow');
                await developer.lines('setting').first().click();
                await developer.uses('Pause');
                await developer.uses('Change locale');
                await developer.seesResult('refused');
                for (const colorScheme of ['dark', 'light'] as const) {
                    await page.emulateMedia({ colorScheme });
                    await developer.list().focus();
                    await expectAccessible(page, `the ${colorScheme} device page with messages`);
                    await developer.frame('Request').focus();
                    await expectAccessible(page, `the ${colorScheme} device page with a frame`);
                }
                await expectNoSidewaysScroll(page);
                await developer.switches('sdk-slow');
                await expect.poll(() => page.getByText('Faults on').count()).toBe(0);
            },
            { viewport },
        );
    },
);
