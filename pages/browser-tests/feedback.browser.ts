import { expect, test } from 'vitest';

import { hostOfEachTest } from './host';
import { Person } from './person';
import { expectStatus, row, sectionIds, visitSettings } from './settings';
import { phone, small } from './visit';
import { tap } from './wire';

/** What the page says about changes, of this page and of others. */

const host = hostOfEachTest();

test('a change is ticked in its row, and nothing around it moves', async () => {
    await visitSettings(host, async (page) => {
        const person = new Person(page);
        await person.goesInto('voice');
        const places = () =>
            page.locator('main .row').evaluateAll((rows) => rows.map((one) => one.getBoundingClientRect().top));
        const before = await places();
        await person.press('Enter');
        await expectStatus(page, 'handsFreeEnabled', 'accepted', 'Saved');
        expect(await row(page, 'handsFreeEnabled').locator('.status .icon').getAttribute('data-icon')).toBe('done');
        expect(await places()).toEqual(before);
    });
});

test.each([
    ['a TV', small],
    ['a phone', phone],
])('on %s a message never covers the focused control, nor an open panel’s', async (_name, viewport) => {
    await visitSettings(
        host,
        async (page) => {
            const person = new Person(page);
            const expectApart = async (where: string) => {
                const { isDrawn, isApart, text } = await page.evaluate(() => {
                    const boxOf = (selector: string) =>
                        document.querySelector(selector)?.getBoundingClientRect() ?? new DOMRect();
                    const [message, control] = [boxOf('.message'), boxOf(':focus')];
                    const isBeside = message.left >= control.right || control.left >= message.right;
                    const isBelow = message.top >= control.bottom || control.top >= message.bottom;
                    return {
                        isDrawn: message.width * message.height > 0 && control.width * control.height > 0,
                        isApart: isBeside || isBelow,
                        text: document.activeElement?.textContent,
                    };
                });
                expect({ isDrawn, isApart }, `${where}: ${text}`).toEqual({ isDrawn: true, isApart: true });
            };
            await host.control('set', 'deviceName', 'A name that takes several lines in the corner of the page');
            await person.sees('Device name set to A name that takes');
            for (const section of sectionIds) {
                await person.goesInto(section);
                const rows = await page.locator('main [data-row]').count();
                for (let steps = 0; steps < rows; steps += 1) {
                    await expectApart(section);
                    await person.press('Down');
                }
            }
            await person.goesInto('captions');
            const box = (await page.locator('.message').boundingBox()) ?? expect.fail('no message');
            const clip = { x: box.x + 20, y: box.y + 10, width: box.width - 40, height: box.height - 20 };
            const before = await page.screenshot({ clip });
            await person.press('Enter');
            await page.getByRole('dialog').waitFor();
            for (let steps = 0; steps < 4; steps += 1) {
                await expectApart(`choice ${steps}`);
                await person.press('Down');
            }
            // It is in front of the panel, as bright as before.
            expect((await page.screenshot({ clip })).equals(before)).toBe(true);
        },
        { viewport },
    );
});

test('messages say who turned something on, and follow each other', async () => {
    await visitSettings(host, async (page) => {
        const person = new Person(page);
        await host.control('device', 'captions', 'on');
        await person.sees('Captions turned on by the TV');
        await host.control('device', 'captions', 'off');
        await person.sees('Captions turned off by the TV');
        await host.control('set', 'deviceName', 'Attic', 'friendlyName', 'Telly');
        await person.sees('Friendly name set to Telly by settingsctl');
    });
});

test('a failed write says why and offers to try again, which arrows reach', async () => {
    let isRefusing = true;
    const refused = { outcome: 'refused', reason: 'not-stored', message: '', value: 'TV' };
    const wire = {
        toPage: (frame: Record<string, unknown>) =>
            isRefusing && frame['type'] === 24 ? { ...frame, payload: refused } : frame,
    };
    await visitSettings(
        host,
        async (page) => {
            const person = new Person(page);
            await person.goesInto('device');
            await person.press('Enter');
            await page.keyboard.type('Den');
            await person.press('Enter');
            await person.sees('Not changed: the TV could not save it.');
            await person.isAt('deviceName');
            await person.press('Down');
            expect(await person.focused.innerText()).toBe('Try again');
            await person.press('Down');
            await person.isAt('friendlyName');
            await person.press('Up');
            isRefusing = false;
            await person.press('Enter');
            await expectStatus(page, 'deviceName', 'unchanged', 'No change');
            await person.isAt('deviceName');
        },
        { prepare: (page) => tap(page, wire) },
    );
    expect(await host.value('deviceName')).toBe('Den');
});
