import type { Locator } from 'playwright-core';
import { beforeEach, expect, test } from 'vitest';

import type { SectionId } from '../src/sections/rows';
import { expectAccessible } from './accessibility';
import { hostOfFile } from './host';
import {
    enterSection,
    expectStatus,
    goDownTo,
    goToMenu,
    press,
    row,
    sectionIds,
    typeOver,
    visitSettings,
} from './settings';
import { expectNoSidewaysScroll, hostIsAway, phone, small, visit } from './visit';

const host = hostOfFile();

beforeEach(() => host.setLocales('en-US'));

test('axe-core finds nothing on a phone, without a connection, and on an unauthorized page', async () => {
    await visitSettings(
        host,
        async (page) => {
            await expectAccessible(page, 'a phone');
            await host.kill();
            await page.getByRole('alert').getByRole('button').waitFor();
            await expectAccessible(page, 'no connection');
            await expectNoSidewaysScroll(page);
            await host.resumeAsNew();
            await page.getByRole('alert').getByText('settingsctl page').waitFor();
            await expectAccessible(page, 'no admittance');
            await expectNoSidewaysScroll(page);
        },
        { viewport: phone, expected: hostIsAway },
    );
});

test('every control is large enough to be touched', async () => {
    await visitSettings(
        host,
        async (page) => {
            for (const section of sectionIds) {
                await goToMenu(page, section);
                const sizes = await page
                    .locator('button, input, [tabindex="0"]')
                    .evaluateAll((controls) =>
                        controls
                            .map((control) => control.getBoundingClientRect())
                            .map(({ width, height }) => Math.min(width, height)),
                    );
                expect(Math.min(...sizes), `smallest control of ${section}`).toBeGreaterThanOrEqual(24);
            }
        },
        { viewport: phone },
    );
});

test.each(['mouse', 'touch'] as const)('%s alone changes a setting of every kind', async (pointer) => {
    await host.control('set', 'handsFreeEnabled', 'false');
    await host.control('set', 'captionsStyles', 'STYLE_WHITE_ON_BLACK');
    await visitSettings(
        host,
        async (page) => {
            const use = (control: Locator) => (pointer === 'touch' ? control.tap() : control.click());
            const goTo = (section: SectionId) => use(row(page, section).locator('button'));
            await goTo('voice');
            await use(row(page, 'handsFreeEnabled').getByRole('switch'));
            await expectStatus(page, 'handsFreeEnabled', 'accepted', 'Saved');
            await goTo('captions');
            await use(row(page, 'captionsStyles').getByRole('button'));
            await use(page.getByRole('radio', { name: 'Yellow on blue' }));
            await expectStatus(page, 'captionsStyles', 'accepted', 'Saved');
            await goTo('device');
            for (const name of ['For a moment', `By ${pointer}`]) {
                await use(row(page, 'deviceName').getByText('Device name').first());
                await typeOver(page, name);
                await use(page.getByRole('button', { name: 'Save' }));
                await expectStatus(page, 'deviceName', 'accepted', 'Saved');
                const control = await row(page, 'deviceName').locator('.control').boundingBox();
                const status = await row(page, 'deviceName').locator('.status').boundingBox();
                expect(status?.x, 'the message is in the control').toBeGreaterThan(control?.x ?? 0);
                expect((status?.x ?? 0) + (status?.width ?? 0), 'the message covers no tool').toBeLessThan(
                    (control?.x ?? 0) + (control?.width ?? 0),
                );
                if (name === 'For a moment') {
                    await use(row(page, 'deviceName').getByRole('button', { name: 'Reset' }));
                    await expectStatus(page, 'deviceName', 'default', 'TV');
                }
            }
            await goTo('language');
            await use(row(page, 'add').getByRole('button'));
            await use(page.getByRole('dialog').getByText('Italian'));
            await use(page.getByRole('dialog').getByText('Italian (Italy)'));
            await use(row(page, 'it-IT').getByRole('button'));
            await use(page.getByRole('button', { name: 'Make primary' }));
            await expect.poll(() => host.control('--value', 'get', 'orliaLocale')).toBe('["it-IT","en-US"]\n');
            await use(row(page, 'it-IT').getByRole('button').first());
            await use(page.getByRole('button', { name: 'Remove' }));
            await row(page, 'it-IT').waitFor({ state: 'detached' });
            await expect.poll(() => host.control('--value', 'get', 'orliaLocale')).toBe('["en-US"]\n');
        },
        { hasTouch: pointer === 'touch' },
    );
    expect(await host.control('get', 'captionsStyles', 'deviceName', 'handsFreeEnabled')).toBe(
        `captionsStyles=STYLE_YELLOW_ON_BLUE\ndeviceName=By ${pointer}\nhandsFreeEnabled=true\n`,
    );
});

test.each([
    ['more contrast', { contrast: 'more' }],
    ['forced colours', { forcedColors: 'active' }],
] as const)('with %s every row has a border, the focus a ring, and axe-core finds nothing', async (name, media) => {
    await visitSettings(host, async (page) => {
        await page.emulateMedia(media);
        for (const section of sectionIds) {
            await enterSection(page, section);
            await expectAccessible(page, `${section} with ${name}`);
            const borders = await page.locator(':is(main .control, .menu-item):not(:focus)').evaluateAll((rows) =>
                rows.map((one) => {
                    const { borderTopStyle, borderTopWidth, borderTopColor } = getComputedStyle(one);
                    return (
                        borderTopStyle === 'solid' && parseFloat(borderTopWidth) >= 1 && !/, 0\)$/.test(borderTopColor)
                    );
                }),
            );
            expect(new Set(borders), `borders of ${section}`).toEqual(new Set([true]));
            const ring = await page.evaluate(
                () => getComputedStyle(document.activeElement ?? document.body).outlineStyle,
            );
            expect(ring).toBe('solid');
        }
    });
});

/** Focuses each control in turn. Returns: the least contrast between a text of it and the background, with its text. */
function contrastsInFocus(controls: Locator): Promise<{ readonly text: string; readonly contrast: number }[]> {
    return controls.evaluateAll((elements) => {
        const channels = (colour: string) => (colour.match(/[\d.]+/g) ?? []).map(Number);
        const luminance = (colour: string) => {
            const [red = 0, green = 0, blue = 0] = channels(colour).map((channel) => {
                const share = channel / 255;
                return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
            });
            return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
        };
        const background = (element: Element | null): string => {
            const { backgroundColor } = getComputedStyle(element ?? document.documentElement);
            return element === null || channels(backgroundColor)[3] !== 0
                ? backgroundColor
                : background(element.parentElement);
        };
        const contrastOf = (element: Element) => {
            const [text, ground] = [luminance(getComputedStyle(element).color), luminance(background(element))];
            return (Math.max(text, ground) + 0.05) / (Math.min(text, ground) + 0.05);
        };
        return elements.map((control) => {
            (control as HTMLElement).focus();
            const focused = document.activeElement ?? document.body;
            const withText = [focused, ...focused.querySelectorAll('*')].filter((element) =>
                [...element.childNodes].some((node) => node instanceof Text && node.data.trim() !== ''),
            );
            return { text: focused.textContent, contrast: Math.min(...withText.map(contrastOf)) };
        });
    });
}

test.each([
    ['usual colours', {}],
    ['more contrast', { contrast: 'more' }],
    ['forced dark colours', { forcedColors: 'active', colorScheme: 'dark' }],
    ['forced light colours', { forcedColors: 'active', colorScheme: 'light' }],
] as const)('with %s every control that has the focus can be read, in dialogs too', async (_name, media) => {
    await host.setLocales('en-US', 'fr-FR');
    await visitSettings(host, async (page) => {
        await page.emulateMedia(media);
        const faults: string[] = [];
        const readAll = async (controls: Locator) => {
            const found = await contrastsInFocus(controls);
            expect(found.length).toBeGreaterThan(0);
            faults.push(
                ...found
                    .filter(({ contrast }) => contrast < 4.5)
                    .map(({ text, contrast }) => `${text}: ${contrast.toFixed(1)}`),
            );
        };
        for (const section of sectionIds) {
            await enterSection(page, section);
            await readAll(page.locator('main').locator('button:not(:disabled), [tabindex="0"]'));
        }
        await press(page, 'Enter');
        await readAll(page.getByRole('dialog').getByRole('button'));
        await press(page, 'Escape');
        await enterSection(page, 'language');
        await row(page, 'timezone').getByRole('button').focus();
        await press(page, 'Enter');
        await page.getByRole('dialog').getByRole('textbox').waitFor();
        await page.keyboard.type('Vancouver');
        await page.getByText('1 found').waitFor();
        await readAll(page.getByRole('dialog').getByRole('button'));
        expect(faults).toEqual([]);
    });
});

test('the preview shows the caption colours with forced colours, too', async () => {
    await host.control('set', 'captionsStyles', 'STYLE_YELLOW_ON_BLUE');
    await visitSettings(host, async (page) => {
        await page.emulateMedia({ forcedColors: 'active' });
        await enterSection(page, 'captions');
        const look = await page.locator('.scene p').evaluate((text) => {
            const { color, backgroundColor } = getComputedStyle(text);
            const { backgroundImage } = getComputedStyle(text.parentElement ?? text);
            return [color, backgroundColor, backgroundImage.slice(0, 15)];
        });
        expect(look).toEqual(['rgb(255, 255, 0)', 'rgb(0, 0, 255)', 'linear-gradient']);
    });
});

test('the focus is in view after every step, on the smallest TV', async () => {
    await host.setLocales('en-US', 'fr-FR', 'de-DE', 'ja-JP', 'es-MX', 'it-IT', 'nl-NL', 'pt-BR');
    await visitSettings(
        host,
        async (page) => {
            for (const section of sectionIds) {
                await enterSection(page, section);
                await page.evaluate(() => {
                    const looks: unknown[] = [];
                    Object.assign(window, { looks });
                    document.onkeyup = () => {
                        const element = document.activeElement ?? document.body;
                        const { top, bottom } = element.getBoundingClientRect();
                        const { outlineStyle, outlineWidth } = getComputedStyle(element);
                        looks.push({ top, bottom, outline: outlineStyle === 'none' ? 0 : parseFloat(outlineWidth) });
                    };
                });
                // The first only looks where the focus is.
                await press(page, 'Shift', ...Array<string>(11).fill('ArrowDown'));
                const looks = await page.evaluate(() => {
                    document.onkeyup = null;
                    return (window as unknown as { looks: Record<'top' | 'bottom' | 'outline', number>[] }).looks;
                });
                expect(looks.length).toBe(12);
                for (const { top, bottom, outline } of looks) {
                    expect(top).toBeGreaterThanOrEqual(0);
                    expect(bottom).toBeLessThanOrEqual(small.height);
                    expect(outline, `width of the focus ring in ${section}`).toBeGreaterThanOrEqual(2);
                }
            }
        },
        { viewport: small },
    );
});

const hostile = '<img src=x onerror=alert(1)>\u202e\u0007&amp;';

test('unexpected values are shown as text', async () => {
    await host.control('set', 'friendlyName', 'n'.repeat(60_000));
    for (const [key, value] of [
        ['deviceName', hostile],
        ['companionDevice', 'no pair'],
        ['timezone', hostile],
        ['captionsFontSize', hostile],
        ['captionsStyles', '__proto__'],
        ['tovanEntitlementStatus', hostile],
    ] as const) {
        await host.control('set', key, value);
    }
    await visitSettings(
        host,
        async (page) => {
            for (const section of sectionIds) {
                await enterSection(page, section);
                await expectNoSidewaysScroll(page);
                expect(await page.locator('main img').count()).toBe(0);
            }
            await enterSection(page, 'device');
            expect(await page.locator('main').innerText()).toContain('<img src=x onerror=alert(1)>');
            await enterSection(page, 'language');
            await goDownTo(page, 'timezone');
            await press(page, 'Enter');
            await page.getByRole('dialog').waitFor();
            await expectNoSidewaysScroll(page);
        },
        { viewport: phone },
    );
});

const hostileLocales = [
    ['names of object members', '["constructor"]'],
    ['names of prototypes', '["__proto__","x"]'],
    ['markup and direction marks', '["<b>","\u202e","a"]'],
    ['underscores and repetitions', '["en_US","en_US","en_US","en_US"]'],
    ['much text', JSON.stringify(['l'.repeat(5_000), 'm', 'n', 'o', 'p'])],
] as const;

test('unexpected locales are shown as they are, and the page is in English', async () => {
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'language');
            for (const [name, locales] of hostileLocales) {
                await host.control('set', 'orliaLocale', locales);
                const count = (JSON.parse(locales) as string[]).length;
                await expect.poll(() => page.locator('.locales > li').count(), { message: name }).toBe(count);
                expect(await page.locator('html').getAttribute('lang'), name).toBe('en');
                await expectNoSidewaysScroll(page);
            }
            await page.reload();
            await page.locator('.locales > li').first().waitFor();
            expect(await page.locator('.locales > li').count()).toBe(5);
        },
        { viewport: phone },
    );
});

test('the page shows that it loads the values', async () => {
    await visit(
        host,
        async (page) => {
            await page.getByText('Loading settings').waitFor();
            await expectAccessible(page, 'the page without values');
        },
        { prepare: (page) => page.routeWebSocket(/settings/, () => undefined) },
    );
});
