import { expect, test } from 'vitest';

import { hostOfEachTest } from './host';
import { enterSection, expectStatus, expectValue, press, row, visitSettings } from './settings';
import { tap, type Frame, type Wire } from './wire';

const host = hostOfEachTest();

/** Replaces members of the payload of the page's SetSettings request. */
function withPayload(payload: object): Wire {
    return { toHost: (frame) => (frame['type'] === 24 ? { ...frame, payload } : frame) };
}

/** Replaces members of the host's answer to a request of this type. */
function withAnswer(type: number, answer: object): Wire {
    const isAnswer = (frame: Frame) => frame['type'] === type && Object.hasOwn(frame['payload'] ?? {}, 'outcome');
    return { toPage: (frame) => (isAnswer(frame) ? { ...frame, payload: answer } : frame) };
}

const taken = { type: 24, timestamp: 9000000000000, payload: { settingDBId: 'deviceName', to: 'TV' } };
/** What the page sets. */
const text = 'Attic '.repeat(10_000);
/** The storage takes 1 MiB. */
const filling = Array.from({ length: 17 }, (_, number) => ({
    type: 24,
    timestamp: 1,
    payload: { settingDBId: `filling-${number}`, to: text },
}));

const refusals: readonly (readonly [string, string, string, Wire, readonly object[]])[] = [
    ['stale', 'Not changed: it was changed elsewhere in the meantime.', 'TV', {}, [taken]],
    ['not-stored', 'Not changed: the TV could not save it.', 'TV', {}, filling],
    [
        'incomplete',
        'Not changed: reload this page and try again.',
        'TV',
        withPayload({ settingDBId: 'deviceName' }),
        [],
    ],
    [
        'read-only',
        'Not changed: this can only be set on the device.',
        'false',
        withPayload({ settingDBId: 'captionsEnabled', to: 'true' }),
        [],
    ],
    [
        'wrong-form',
        'Not changed: the TV does not accept this value.',
        '["en-US"]',
        withPayload({ settingDBId: 'orliaLocale', to: 'en-US' }),
        [],
    ],
    [
        'of a later version',
        'Not changed: the reason is unknown.',
        'TV',
        withAnswer(24, { outcome: 'refused', reason: 'too-loud', message: '', value: 'TV' }),
        [],
    ],
    [
        'not-applied',
        'The TV did not apply this change.',
        'TV',
        withAnswer(24, { outcome: 'changed', applied: false, value: 'TV' }),
        [],
    ],
];

test.each(refusals)(
    'a change that is refused as %s is taken back with the words "%s"',
    async (_, words, value, wire, before) => {
        await visitSettings(
            host,
            async (page) => {
                for (const frame of before) {
                    await host.send(frame);
                }
                await press(page, 'ArrowRight', 'Enter');
                await page.getByRole('textbox').fill(text);
                await press(page, 'Enter');
                await expectStatus(page, 'deviceName', 'refused', words);
                await expectValue(page, 'deviceName', value);
            },
            { prepare: (page) => tap(page, wire) },
        );
    },
);

test('a log-out that could not erase everything is told', async () => {
    const refused = { outcome: 'refused', reason: 'not-stored', message: '' };
    await visitSettings(
        host,
        async (page) => {
            await enterSection(page, 'account');
            await row(page, 'log-out').locator('button').press('Enter');
            await page.getByRole('dialog').getByRole('button', { name: 'Log out' }).press('Enter');
            await page.getByText('Failed: the TV could not do this.').waitFor();
        },
        { prepare: (page) => tap(page, withAnswer(22, refused)) },
    );
});

test('a host of version 1.0 is told, and the values stay', async () => {
    await host.control('set', 'deviceName', 'Den');
    let isOld = false;
    let cut = () => Promise.resolve();
    // Such a host sees a frame without a type.
    const withoutHello = ({ hello: _hello, ...others }: Frame): Frame => others;
    await visitSettings(
        host,
        async (page) => {
            await expectValue(page, 'deviceName', 'Den');
            isOld = true;
            await cut();
            await page.getByRole('alert').getByText('The TV’s software is too old for this page.').waitFor();
            await expectValue(page, 'deviceName', 'Den');
        },
        {
            prepare: async (page) => {
                cut = await tap(page, { toHost: (frame) => (isOld ? withoutHello(frame) : frame) });
            },
        },
    );
});

const change = { type: 24, timestamp: 1, payload: { settingDBId: 'deviceName', to: 'Attic' } };

test('after a lost connection a page has the changes of the meantime, and reads no other values', async () => {
    const sent: Frame[] = [];
    let meanwhile: () => Promise<unknown> = () => Promise.resolve();
    let cut = () => Promise.resolve();
    await visitSettings(
        host,
        async (page) => {
            await expectValue(page, 'deviceName', 'TV');
            sent.length = 0;
            meanwhile = () => host.send({ messageId: 'h', hello: { client: 'kitchen-remote' } }, change);
            await cut();
            await page.getByText('Device name set to Attic by kitchen-remote').waitFor();
            await expectValue(page, 'deviceName', 'Attic');
            await expect.poll(() => sent.some(({ type }) => type === 7)).toBe(true);
            await enterSection(page, 'captions');
            meanwhile = () => host.control('device', 'captions', 'on');
            await cut();
            await expectValue(page, 'captionsEnabled', 'On');
            await page.getByText('Captions turned on by the TV').waitFor();
        },
        {
            prepare: async (page) => {
                cut = await tap(page, {
                    connect: () => meanwhile(),
                    toHost: (frame) => {
                        sent.push(frame);
                        return frame;
                    },
                });
            },
        },
    );
    const client = 'settings page (Linux)';
    // After a notice it reads the recent changes, too: somebody may have logged out.
    expect(sent.filter(({ type, history }) => type !== 18 && history === undefined)).toMatchObject([
        { hello: { client, resume: { sequence: 0 } } },
        { type: 7, payload: { settings: ['deviceName'] } },
        { hello: { client, resume: { sequence: 1 } } },
        { type: 7, payload: { settings: ['captionsEnabled'] } },
    ]);
});
