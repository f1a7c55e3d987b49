import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { hostOfFile } from './host';
import {
    enterSection,
    expectFocus,
    expectStatus,
    expectValue,
    goDownTo,
    press,
    row,
    typeOver,
    visitSettings,
} from './settings';

const host = hostOfFile();

test('About says how the host is, the versions, and the address without its key', async () => {
    const version = /(\d+\.\d+\.\d+)/.exec((await host.settingsctl('--version')).output)?.[1] ?? 'none';
    await visitSettings(host, async (page) => {
        await enterSection(page, 'about');
        await expectFocus(page, 'health');
        await expectValue(page, 'health', 'Everything works');
        await row(page, 'version').getByText(`Version ${version}`).first().waitFor();
        await expectValue(page, 'wire', 'Version 1.1.0');
        await expectValue(page, 'pages', `Version ${version}`);
        await expectValue(page, 'address', new URL(host.page('/')).origin);
        await expectAccessible(page, 'about');
    });
});

test('About says in words what is wrong', async () => {
    const health = {
        status: 'recovered',
        version: '1.2.3',
        storage: { recoveredFrom: 'backup' },
        faults: ['storage-full'],
    };
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'about');
            await expectValue(page, 'health', 'Restored from a backup');
            await expectValue(page, 'faults', 'storage-full');
        },
        { prepare: (page) => page.route('**/healthz', (route) => route.fulfill({ json: health })) },
    );
});

test('a setting is reset to its default from its row, which says the default; one that has it offers nothing', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'device');
        expect(await page.locator('[data-tool="reset"]').count()).toBe(0);
        await press(page, 'Enter');
        await typeOver(page, 'Den');
        await press(page, 'Enter');
        await expectStatus(page, 'deviceName', 'accepted', 'Saved');
        await press(page, 'ArrowRight');
        await page.locator('[data-tool="reset"]:focus', { hasText: 'Reset to TV' }).waitFor();
        await press(page, 'Enter');
        await expectStatus(page, 'deviceName', 'default', 'Reset to the default: TV');
        await expectFocus(page, 'deviceName');
        expect(await host.value('deviceName')).toBe('TV');
        expect(await page.locator('[data-tool="reset"]').count()).toBe(0);
    });
});

test('an introduction that was seen can be shown again', async () => {
    await host.control('set', 'handsFreeAlwaysOnDiscovered', 'true');
    await visitSettings(host, async (page) => {
        await enterSection(page, 'voice');
        await goDownTo(page, 'handsFreeAlwaysOnDiscovered');
        await expectValue(page, 'handsFreeAlwaysOnDiscovered', 'Seen');
        await press(page, 'Enter');
        await expectStatus(page, 'handsFreeAlwaysOnDiscovered', 'accepted', 'Saved');
        await expectValue(page, 'handsFreeAlwaysOnDiscovered', 'Not seen yet');
        expect(await host.value('handsFreeAlwaysOnDiscovered')).toBe('false');
    });
});

test('the always-on modes say that hands-free is off, as long as it is', async () => {
    await visitSettings(host, async (page) => {
        await enterSection(page, 'voice');
        await goDownTo(page, 'handsFreeAlwaysOnEnabled');
        const hint = page.getByText('Hands-free is off: use the microphone').first();
        await hint.waitFor();
        await host.control('device', 'handsfree', 'on');
        await hint.waitFor({ state: 'detached' });
    });
});
