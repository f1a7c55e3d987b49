import type { Locator } from 'playwright-core';
import { expect, test } from 'vitest';

import { expectAccessible } from './accessibility';
import { hostOfFile } from './host';
import { Person } from './person';
import { enterSection, goToMenu, row, sectionIds, visitSettings } from './settings';
import { expectNoSidewaysScroll, phone, small, wide } from './visit';

/** Layout, rows, themes and motion: what people see from three metres away, and what they hold in their hands. */

const host = hostOfFile(async (host) => {
    await host.setLocales('en-US', 'fr-FR');
    await host.control('set', 'deviceName', 'Living room');
});

async function boxOf(place: Locator): Promise<{ left: number; right: number; top: number; bottom: number }> {
    const { x, y, width, height } = (await place.boundingBox()) ?? expect.fail('it is not drawn');
    return { left: x, right: x + width, top: y, bottom: y + height };
}

test.each([
    ['1920×1080', wide],
    ['1280×720', small],
])('at %s every section is within the safe area, beside what explains the focused row', async (_size, viewport) => {
    const [inline, block] = [viewport.width * 0.05, viewport.height * 0.05];
    await visitSettings(
        host,
        async (page) => {
            const explained: string[] = [];
            for (const section of sectionIds) {
                await enterSection(page, section);
                const [menu, list] = [await boxOf(page.locator('.menu')), await boxOf(page.locator('.list'))];
                expect(Math.min(menu.left, viewport.width - list.right)).toBeGreaterThanOrEqual(inline);
                expect(Math.min(menu.top, list.top)).toBeGreaterThanOrEqual(block);
                for (const explanation of await page.locator('.explanation').filter({ visible: true }).all()) {
                    explained.push(section);
                    const { left, right, bottom } = await boxOf(explanation);
                    expect(left).toBeGreaterThan(list.right);
                    expect(right).toBeLessThanOrEqual(viewport.width - inline + 1);
                    expect(bottom).toBeLessThanOrEqual(viewport.height - block);
                }
                const [small = 0, body = 0] = await page.evaluate(() =>
                    ['.value', '.name'].map((part) => {
                        const element = document.querySelector(`main ${part}`);
                        return element === null ? 99 : parseFloat(getComputedStyle(element).fontSize);
                    }),
                );
                expect(body).toBeGreaterThanOrEqual((28 / 1080) * viewport.height * 0.98);
                expect(body).toBeGreaterThanOrEqual(small * 1.2);
            }
            expect(explained).toEqual(['device', 'language', 'captions', 'voice', 'account']);
        },
        { viewport },
    );
});

test('the explanation says who changed the focused setting last, and why it cannot be changed here', async () => {
    await visitSettings(host, async (page) => {
        const person = new Person(page);
        await person.goesInto('device');
        await person.sees(/^Changed by settingsctl, /);
        await person.press('Down');
        await person.doesNotSee(/^Changed by settingsctl, /);
        await host.control('set', 'friendlyName', 'Big screen');
        await person.sees(/^Changed by settingsctl, /);
        await person.goesInto('captions');
        await person.isAt('captionsEnabled');
        await person.sees('Press the captions button on the TV’s remote');
    });
});

test('rows say what they are: they open, switch, show or act', async () => {
    await visitSettings(host, async (page) => {
        const person = new Person(page);
        const markOf = (name: string) => row(page, name).locator('.mark').count();
        await person.goesInto('captions');
        expect(await markOf('captionsEnabled')).toBe(0);
        expect(await row(page, 'captionsFontSize').locator('.mark[data-icon="opens"]').count()).toBe(1);
        await person.goesDownTo('captionsEnabled');
        await person.press('Enter');
        await page.getByRole('dialog', { name: 'Captions' }).waitFor();
        await expectAccessible(page, 'the explanation of a row that is only shown');
        await person.press('Back');
        await person.isAt('captionsEnabled');
        await person.goesDownTo('captionsFontSize');
        await person.press('Enter');
        await page.getByRole('dialog', { name: 'Text size' }).waitFor();
        expect(await person.focused.getAttribute('aria-checked')).toBe('true');
        const panel = await boxOf(page.getByRole('dialog'));
        expect([panel.top, panel.bottom]).toEqual([0, small.height]);
        await person.press('Back');
        await person.isAt('captionsFontSize');
        await person.goesInto('voice');
        await page.locator('main .switch').first().waitFor();
        await person.goesInto('account');
        expect(await markOf('log-out')).toBe(0);
    });
});

test('no sign is a glyph of a font', async () => {
    await visitSettings(host, async (page) => {
        for (const section of sectionIds) {
            await goToMenu(page, section);
            const text = await page.locator('body').innerText();
            expect(text.match(/[\u2190-\u2bff\u3000-\u303f\uff01-\uff5e]/g), section).toBeNull();
            expect(await page.locator('svg:not([aria-hidden="true"])').count()).toBe(0);
        }
    });
});

test.each([
    ['the light theme', { colorScheme: 'light' }],
    ['the light theme with more contrast', { colorScheme: 'light', contrast: 'more' }],
] as const)('in %s axe-core finds nothing in any view', async (name, media) => {
    await visitSettings(host, async (page) => {
        const person = new Person(page);
        await page.emulateMedia(media);
        const ground = await page.evaluate(() => getComputedStyle(document.documentElement).backgroundColor);
        expect(Number(/\d+/.exec(ground)?.[0])).toBeGreaterThan(128);
        for (const section of sectionIds) {
            await enterSection(page, section);
            await expectAccessible(page, `${section}, ${name}`);
        }
        await person.goesInto('account');
        await person.goesDownTo('log-out');
        await person.press('Enter');
        await expectAccessible(page, `the log-out, ${name}`);
        await person.press('Back');
        await person.goesInto('captions');
        await person.goesDownTo('captionsFontSize');
        await person.press('Enter');
        await expectAccessible(page, `a panel, ${name}`);
    });
});

test('only opacity and position move, for 150 ms; nothing with reduced motion', async () => {
    await visitSettings(host, async (page) => {
        const person = new Person(page);
        /** What of the page moves: properties and durations of transitions and animations. */
        const motions = () =>
            page.evaluate(() => {
                const found = new Set<string>();
                for (const element of document.querySelectorAll('*')) {
                    for (const part of [undefined, '::after', '::backdrop']) {
                        const style = getComputedStyle(element, part);
                        if (!/^(0s(, )?)+$/.test(style.transitionDuration)) {
                            found.add(`${style.transitionProperty} ${style.transitionDuration}`);
                        }
                        if (style.animationName !== 'none') {
                            found.add(`${style.animationName} ${style.animationDuration}`);
                        }
                    }
                }
                return [...found].sort();
            });
        const seen = new Set<string>();
        const look = async () => {
            expect(await motions()).toEqual([]);
            await page.emulateMedia({ reducedMotion: 'no-preference' });
            (await motions()).forEach((motion) => seen.add(motion));
            await page.emulateMedia({ reducedMotion: 'reduce' });
        };
        await person.goesInto('voice');
        await person.press('Enter');
        await person.sees('Saved');
        await look();
        await person.goesInto('captions');
        await person.goesDownTo('captionsFontSize');
        await person.press('Enter');
        await page.getByRole('dialog').waitFor();
        await look();
        // "tell" fades in and out at the ends of the time of a message.
        expect([...seen].sort()).toEqual(['appear 0.15s', 'tell 6s', 'transform 0.15s']);
        const animated = await page.evaluate(() =>
            [...document.styleSheets]
                .flatMap((sheet) => [...sheet.cssRules])
                .filter((rule) => rule instanceof CSSKeyframesRule)
                .flatMap((rule) => [...rule.cssRules].flatMap((frame) => [...(frame as CSSKeyframeRule).style])),
        );
        expect(new Set(animated)).toEqual(new Set(['opacity']));
    });
});

test('on a phone the menu is one strip that scrolls, and switches are beside their names', async () => {
    await visitSettings(
        host,
        async (page) => {
            const tops = await page
                .locator('.menu-item')
                .evaluateAll((items) => items.map((item) => item.getBoundingClientRect().top));
            expect(new Set(tops).size).toBe(1);
            for (const section of sectionIds) {
                await row(page, section).locator('button').tap();
                const item = await boxOf(row(page, section).locator('button'));
                expect(item.left).toBeGreaterThanOrEqual(0);
                expect(item.right).toBeLessThanOrEqual(phone.width);
                await expectNoSidewaysScroll(page);
                const heights = await page
                    .locator('main .control, .menu-item, main .button')
                    .evaluateAll((controls) => controls.map((control) => control.getBoundingClientRect().height));
                expect(Math.min(...heights), `lowest control of ${section}`).toBeGreaterThanOrEqual(44);
            }
            await row(page, 'voice').locator('button').tap();
            const [name, mark] = [
                await boxOf(row(page, 'handsFreeEnabled').locator('.name')),
                await boxOf(row(page, 'handsFreeEnabled').locator('.switch')),
            ];
            expect(mark.left).toBeGreaterThanOrEqual(name.right);
            expect(mark.top).toBeLessThan(name.bottom);
            // What the rows are is there without a focus.
            await page
                .getByText('Talk to the assistant without the remote control.')
                .filter({ visible: true })
                .waitFor();
        },
        { viewport: phone, hasTouch: true },
    );
});
