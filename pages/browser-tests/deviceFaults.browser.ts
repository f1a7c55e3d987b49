import { expect, test } from 'vitest';

import { visitDevice } from './device';
import { hostOfFile } from './host';
import { hostIsAway } from './visit';

const host = hostOfFile();

test('a developer switches faults by keys; a red mark stays as long as one is on', async () => {
    await visitDevice(host, async (developer) => {
        const { page } = developer;
        await page.getByRole('switch', { name: 'storage-full' }).focus();
        await developer.press('Enter');
        await developer.sees('⚠ Faults on: storage-full');
        await developer.seesResult('fault storage-full on: done');
        await host.settingsctl('set', 'deviceName', 'Lost');
        await developer.seesMessage('refused, not-stored');

        await developer.goesTo('Value of storage-slow');
        await developer.types('1');
        await developer.press('Enter');
        await developer.sees('⚠ Faults on: storage-full, storage-slow');
        await developer.press('Enter');
        await page.getByRole('switch', { name: 'storage-full' }).focus();
        await developer.press('Enter');
        await developer.seesResult('fault storage-full off: done');
        await expect.poll(() => page.getByText('Faults on').count()).toBe(0);
    });
});

test('a fault of a setting has its settings as choices; one that happens once has a button', async () => {
    await visitDevice(host, async (developer) => {
        const { page } = developer;
        await page.getByLabel('Value of sdk-refuses').selectOption('friendlyName');
        await developer.switches('sdk-refuses');
        await developer.sees('⚠ Faults on: sdk-refuses');
        await host.control('set', 'friendlyName', 'Telly');
        await developer.seesMessage('refused by the voice SDK');
        await developer.switches('sdk-refuses');
        await page.getByLabel('Value of sdk-changes').selectOption('captionsEnabled');
        await developer.uses('sdk-changes');
        await developer.seesState('captionsEnabled', 'true');
        await expect.poll(() => page.getByText('Faults on').count()).toBe(0);
        await page.getByLabel('Value of sdk-slow').fill('soon');
        await developer.switches('sdk-slow');
        await developer.seesResult('refused, bad-argument');
    });
});

test('a host without faults has no switches for them', async () => {
    await visitDevice(
        host,
        async (developer) => {
            await developer.seesState('timezone', 'Asia/Tokyo');
            expect(await developer.page.getByText('Faults').count()).toBe(0);
        },
        {
            prepare: (page) =>
                page.routeWebSocket(/device/, (socket) => {
                    socket.onMessage((message) => {
                        const { command } = JSON.parse(message.toString()) as { command: string };
                        socket.send(
                            command === 'show'
                                ? '{"device":{"timezone":"Asia/Tokyo"}}'
                                : '{"error":{"code":"unknown-command","message":"no"}}',
                        );
                    });
                }),
        },
    );
});

// The last test: with its start the host makes another key for new visits.
test('after the fault that restarts the host the page connects again', async () => {
    await visitDevice(
        host,
        async (developer) => {
            const connectsAgain = developer.page.waitForEvent('websocket');
            await developer.uses('restart');
            await connectsAgain;
            await developer.sees('● Connected');
            await developer.seesMessage('fault restart on');
            await developer.switches('Captions');
            await developer.seesResult('done');
        },
        { expected: hostIsAway },
    );
});
