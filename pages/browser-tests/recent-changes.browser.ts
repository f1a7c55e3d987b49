import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { hostOfEachTest } from './host';
import { enterSection, expectFocus, press, row, visitSettings } from './settings';

const host = hostOfEachTest();

test('a person sees who changed what, and undoes the newest change', async () => {
    await host.control('set', 'captionsFontSize', 'FONT_LARGE');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'changes');
        const newest = page.locator('main .row').first();
        await newest.getByText('Text size').first().waitFor();
        await newest.getByText('From “Medium” to “Large”').waitFor();
        await newest.getByText(/settingsctl/).waitFor();
        await expectAccessible(page, 'recent changes');

        // Kept current while they are shown; the focus stays on its change.
        await expectFocus(page, 'change-1');
        await host.control('device', 'setting', 'deviceName', 'Den');
        await newest.getByText('From “TV” to “Den”').waitFor();
        await expectFocus(page, 'change-1');

        await press(page, 'ArrowUp', 'ArrowRight');
        await page.locator('[data-tool="undo"]:focus', { hasText: 'Undo' }).waitFor();
        await press(page, 'Enter');
        await row(page, 'change-2').getByText('Saved').waitFor();
        await expectFocus(page, 'change-2');
        await newest.getByText('From “Den” to “TV”').waitFor();
        expect(await host.value('deviceName')).toBe('TV');

        // What has its old value again cannot be undone once more; how that was undone can be.
        const undoable = page.locator('.row:has([data-tool="undo"])');
        await expect
            .poll(() => undoable.evaluateAll((rows) => rows.map((one) => one.getAttribute('data-row'))))
            .toEqual(['change-3', 'change-1']);
    });
});

test('repeated Enter undoes nothing', async () => {
    await host.control('set', 'deviceName', 'Den');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'changes');
        await press(page, 'Escape');
        await press(page, 'Enter', 'Enter', 'Enter');
        await expectFocus(page, 'change-1');
        expect(await host.value('deviceName')).toBe('Den');
    });
});

test('an undo that is refused says why', async () => {
    await host.control('set', 'deviceName', 'Den');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'changes');
        const timestamp = Date.now() + 1_000_000;
        await host.send({ type: 24, timestamp, payload: { settingDBId: 'deviceName', to: 'Den' } });
        await press(page, 'ArrowRight', 'Enter');
        await row(page, 'change-1').getByText('Not changed: it was changed elsewhere in the meantime.').waitFor();
        expect(await host.value('deviceName')).toBe('Den');
    });
});

test('what only the service reports has no undo; after a log-out nothing is shown', async () => {
    await host.control('set', 'tovanEntitlementStatus', 'active');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'changes');
        await row(page, 'change-1').getByText('From “Not set” to “active”').waitFor();
        expect(await page.getByRole('button', { name: 'Undo' }).count()).toBe(0);
        await host.control('logout');
        await page.getByText('No recent changes').first().waitFor();
        await expectFocus(page, 'no-changes');
    });
});
