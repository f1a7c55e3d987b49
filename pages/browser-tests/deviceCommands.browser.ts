import { expect, test } from 'vitest';

import { visitDevice } from './device';
import { hostOfFile } from './host';

const host = hostOfFile();

test('a developer gives every command by keys alone and sees what it did', async () => {
    await visitDevice(host, async (developer) => {
        for (const [label, fact, on, off] of [
            ['Hands-free', 'currentHandsFreeStatus', 'on', 'off'],
            ['Captions', 'captionsEnabled', 'true', 'false'],
            ['Do-not-disturb', 'doNotDisturbEnabled', 'true', 'false'],
        ] as const) {
            await developer.goesTo(label);
            await developer.press('Enter');
            await developer.seesState(fact, on);
            await developer.press('Space');
            await developer.seesState(fact, off);
        }
        for (const [label, typed, fact, value] of [
            ['Locale', 'fr-FR', 'locales', '["fr-FR"]'],
            ['Locales', 'ja-JP, de-DE', 'locales', '["ja-JP","de-DE"]'],
            ['Time zone', 'Asia/Tokyo', 'timezone', 'Asia/Tokyo'],
        ] as const) {
            await developer.goesTo(label);
            await developer.types(typed);
            await developer.press('Enter');
            await developer.seesState(fact, value);
        }
        await developer.goesTo('System setting');
        await developer.types('deviceName');
        await developer.press('Tab');
        await developer.types('Den');
        await developer.press('Enter');
        await developer.seesResult('setting deviceName Den: done');
        await developer.press('Enter');
        await developer.seesResult('setting deviceName Den: unchanged');
    });
    expect(await host.control('get', 'deviceName', 'orliaLocale', 'timezone')).toBe(
        'deviceName=Den\norliaLocale=["ja-JP","de-DE"]\ntimezone=Asia/Tokyo\n',
    );
});

test('a held Enter acts once', async () => {
    await visitDevice(host, async (developer) => {
        const { page } = developer;
        await page.getByRole('switch', { name: 'Captions' }).focus();
        for (let times = 0; times < 8; times += 1) {
            await page.keyboard.down('Enter');
        }
        await page.keyboard.up('Enter');
        await developer.seesResult('captions on');
        await host.control('device', 'do-not-disturb', 'on');
        await developer.seesMessage('doNotDisturb on');
        expect(await developer.lines('captions o').count()).toBe(1);
    });
    await host.control('device', 'captions', 'off');
    await host.control('device', 'do-not-disturb', 'off');
});

test('a refused command says why', async () => {
    await visitDevice(host, async (developer) => {
        await host.control('device', 'timezone', 'Asia/Tokyo');
        for (const [button, reason] of [
            ['Change time zone', '"value" must be a time zone'],
            ['Change locale', '"value" must be a locale'],
            ['Change locales', '"values" must be an array of locales'],
        ] as const) {
            await developer.uses(button);
            await developer.seesResult(`refused, bad-argument: ${reason}`);
        }
        await developer.seesState('timezone', 'Asia/Tokyo');
        await developer.page.getByLabel('System setting').fill('orliaLocale');
        await developer.page.getByLabel('Value', { exact: true }).fill('{}');
        await developer.uses('Report setting');
        await developer.seesResult('refused, not-passed-on: the value must be a JSON array of at most 32 levels');
    });
});

test('changes by others are shown, hostile ones as text', async () => {
    await visitDevice(host, async (developer) => {
        await developer.seesState('timezone', 'Asia/Tokyo');
        await host.control('device', 'timezone', 'Europe/Rome');
        await developer.seesState('timezone', 'Europe/Rome');
        await host.control('set', 'timezone', 'Europe/Oslo');
        await developer.seesState('timezone', 'Europe/Oslo');
        await host.control('device', 'setting', 'deviceName', '<img src=x onerror=alert(1)>\u202e');
        await developer.seesMessage('<img src=x onerror=alert(1)>\\u202e');
        await host.control('device', 'timezone', '<b>\u202enowhere\u0007');
        await developer.seesState('timezone', '<b>\\u202enowhere\\u0007');
        expect(await developer.page.locator('.device img, .device b').count()).toBe(0);
        expect(await developer.page.evaluate(() => document.body.innerText.includes('\u202e'))).toBe(false);
    });
});
