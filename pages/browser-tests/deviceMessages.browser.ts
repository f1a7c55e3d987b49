import { expect, test } from 'vitest';

import { visitDevice, type Developer } from './device';
import { hostOfFile } from './host';
import { small } from './visit';

const host = hostOfFile();

test('messages are listed in words, answers beside their requests; Enter shows the frames, Back closes them', async () => {
    await visitDevice(host, async (developer) => {
        await host.control('set', 'deviceName', 'Cellar');
        await host.settingsctl('set', 'captionsEnabled', 'true');
        await host.send(
            { type: 24, timestamp: Date.now(), payload: { settingDBId: 'friendlyName', to: 'Telly' } },
            { messageId: 'c', catalogue: {} },
            {
                batch: [
                    { type: 18, messageId: 'b' },
                    { type: 7, messageId: 'r', payload: { settings: ['deviceName'] } },
                ],
            },
        );
        await host.control('device', 'captions', 'on');
        await developer.seesMessage('captions on');
        expect(await developer.reads()).toEqual([
            'settingsctl | hello client settingsctl | version 1.1.0, sequence 0',
            'settingsctl | Set deviceName to Cellar | changed: Cellar',
            'settingsctl | deviceName: TV → Cellar, by settingsctl',
            'settingsctl | IsOrliaSelectedVA | isOrliaSelectedAsVA true',
            'settingsctl | hello client settingsctl | version 1.1.0, sequence 1',
            'settingsctl | Set captionsEnabled to true | refused, read-only: only the device changes this setting',
            'settingsctl | IsOrliaSelectedVA | isOrliaSelectedAsVA true',
            'socket-N | Set friendlyName to Telly | asks for no answer',
            'all | friendlyName: TV → Telly, by socket',
            'socket-N | catalogue | settings 15',
            'socket-N | Batch: IsOrliaSelectedVA; Read deviceName | isOrliaSelectedAsVA true; deviceName Cellar',
            'device-N | captions on | done',
        ]);

        await developer.list().focus();
        await developer.press('Home', 'Down', 'Enter');
        await expect
            .poll(() => developer.frame('Request').innerText())
            .toMatch(/^\{\n {2}"type": 24,\n[^]*"settingDBId": "deviceName",\n[^]*\n\}$/);
        expect(await developer.frame('Answer').innerText()).toContain('"outcome": "changed"');
        await developer.sees(/^SetSettings from settingsctl, .*answered after \d+ ms$/);
        await developer.press('Down');
        await expect.poll(() => developer.frame('Frame').innerText()).toContain('"from": "TV"');
        await developer.press('Enter');
        await developer.expectFocus('Frame');
        await developer.press('Escape');
        await developer.expectFocus('Messages');
        await expect.poll(() => developer.frame('Frame').count()).toBe(0);
        await developer.press('Escape');
        await expect.poll(() => developer.list().getByRole('option', { selected: true }).count()).toBe(0);
    });
});

test('an answer that never came says so', async () => {
    await visitDevice(
        host,
        async (developer) => {
            await expect
                .poll(() => developer.reads())
                .toEqual([
                    'socket-N | IsOrliaSelectedVA | no answer came',
                    'socket-N | LogOut | done',
                    'socket-N | OpenVASettings | no answer yet',
                ]);
        },
        {
            prepare: (page) =>
                page.routeWebSocket(/device/, (socket) => {
                    socket.onMessage((message) => {
                        if (!message.toString().includes('"trace"')) {
                            socket.send('{"device":{}}');
                            return;
                        }
                        for (const [direction, text] of [
                            ['in', '{"type":18,"messageId":"1"}'],
                            ['in', '{"type":22,"messageId":"2","answer":true}'],
                            ['out', '{"type":22,"messageId":"2","payload":{"outcome":"done"}}'],
                            ['in', '{"type":19,"messageId":"3","answer":true}'],
                        ] as const) {
                            socket.send(
                                JSON.stringify({ trace: { timestamp: 1, direction, door: 'socket', client: 1, text } }),
                            );
                        }
                    });
                }),
        },
    );
});

test('filters work together, stay in the address, and survive a reload and sharing', async () => {
    const fragment = (developer: Developer) => new URL(developer.page.url()).hash;
    await visitDevice(host, async (developer) => {
        const { page } = developer;
        await host.control('device', 'captions', 'off');
        await host.control('set', 'deviceName', 'Porch');
        await developer.seesMessage('by settingsctl');
        await page.getByLabel('Text').fill('PORCH');
        await expect.poll(() => developer.lines().count()).toBe(2);
        await page.getByLabel('Key').selectOption('deviceName');
        await page.getByLabel('Type').selectOption('event');
        await page.getByLabel('Client').selectOption('settingsctl');
        await expect
            .poll(() => developer.reads())
            .toEqual(['settingsctl | deviceName: Cellar → Porch, by settingsctl']);
        expect(fragment(developer)).toBe('#text=PORCH&setting=deviceName&type=event&client=settingsctl');

        await page.reload();
        await page.getByText('● Connected').waitFor();
        expect(await page.getByLabel('Client').inputValue()).toBe('settingsctl');
        expect(await page.getByLabel('Text').inputValue()).toBe('PORCH');
        await developer.sees('No messages');
        await host.control('set', 'friendlyName', 'Porch');
        await host.control('set', 'deviceName', 'New porch');
        await expect
            .poll(() => developer.reads())
            .toEqual(['settingsctl | deviceName: Porch → New porch, by settingsctl']);

        await page.evaluate(() => {
            location.hash = '#client=device';
        });
        await host.control('device', 'captions', 'on');
        await expect.poll(() => developer.reads()).toEqual(['device-N | captions on | done']);
        await page.getByLabel('Client').selectOption('all');
        await expect.poll(() => fragment(developer)).toBe('');
    });
});

test('a pause counts new messages and shows them afterwards; clearing empties the list', async () => {
    await visitDevice(host, async (developer) => {
        await host.control('device', 'captions', 'off');
        await developer.seesMessage('captions off');
        await developer.uses('Pause');
        await host.control('device', 'setting', 'deviceName', 'while paused');
        await developer.sees(/^Paused: [1-9]\d* new$/);
        expect(await developer.lines('while paused').count()).toBe(0);
        await developer.uses('Pause');
        await developer.seesMessage('while paused');
        await developer.uses('Clear');
        await developer.sees('0 of 0');
        expect(await developer.lines().count()).toBe(0);
    });
});

test('the newest 200 messages are kept, and fill a screen of 720 lines', async () => {
    await visitDevice(
        host,
        async (developer) => {
            await host.send(...Array.from({ length: 150 }, (_, index) => ({ type: 18, messageId: `m${index + 1}` })));
            await developer.sees('200 of 200');
            await expect.poll(() => developer.lines().count()).toBe(100);
            const box = await developer.list().boundingBox();
            expect(box?.height).toBeGreaterThan(480);
            expect((box?.y ?? 0) + (box?.height ?? 0)).toBeGreaterThan(680);
            await developer.list().focus();
            await developer.press('Home', 'Enter');
            await expect.poll(() => developer.frame('Request').innerText()).toContain('"m51"');
            expect(await developer.frame('Answer').innerText()).toContain('"m51"');
            await host.control('get');
            await developer.lines('Read every setting').click();
            await expect.poll(() => developer.frame('Answer').innerText()).toContain('captionsEnabled');
            const frame = await developer.frame('Answer').boundingBox();
            expect((frame?.y ?? 0) + (frame?.height ?? 0)).toBeLessThanOrEqual(small.height);
        },
        { viewport: small },
    );
});

test('frames are copied as they were, and what the filter shows as a scenario', async () => {
    await visitDevice(host, async (developer) => {
        await host.control('set', 'deviceName', 'Copied');
        await host.control('device', 'captions', 'on');
        await developer.lines('captions on').click();
        await developer.uses('Copy frame');
        await developer.sees('Copied the frame.');
        expect(await developer.copied()).toBe('{"command":"captions","enabled":true}\n{"ok":true}');
        await developer.page.getByLabel('Key').selectOption('deviceName');
        await developer.uses('Copy as scenario, with personal values');
        await developer.sees('Copied 3 messages.');
        const [title, ...steps] = (await developer.copied())
            .trimEnd()
            .split('\n')
            .map((line) => JSON.parse(line) as Record<string, unknown>);
        expect(title).toMatchObject({ scenario: 1 });
        expect(steps).toMatchObject([
            { time: 0, at: expect.stringMatching(/^socket-\d+$/) as string, sent: { type: 24 } },
            { at: 'all', received: { type: 25, payload: { to: 'Copied' } } },
            { at: steps[0]?.['at'], received: { type: 24, payload: { outcome: 'changed' } } },
        ]);
    });
});
