import type { Page } from 'playwright-core';
import { catalogue, type SettingKey } from 'settings-client';
import { expect, test } from 'vitest';

import { languageFor } from '../src/i18n/language';
import { rows, settingsOf } from '../src/sections/rows';
import { isIntroduction, isReadOnly } from '../src/settings/catalogue';
import { nameOfSetting, wordsFor } from '../src/settings/format';
import { hostOfFile } from './host';
import { enterSection, sectionIds, visitSettings } from './settings';

const host = hostOfFile(async (host) => {
    await host.setLocales('en-US', 'fr-FR');
    await host.control('set', 'tovanEntitlementStatus', 'active');
    await host.control('set', 'handsFreeEnabled', 'true');
});

const told = new Set(['alert', 'button', 'group', 'heading', 'radio', 'radiogroup', 'status', 'switch']);

interface Node {
    readonly role: string;
    readonly line: string;
    readonly children: readonly string[];
}

/** What a screen reader reads, in order: role, name, state and description of controls and live regions. */
async function spoken(page: Page): Promise<string[]> {
    const session = await page.context().newCDPSession(page);
    const { nodes } = await session.send('Accessibility.getFullAXTree');
    await session.detach();
    const known = new Map<string, Node>(
        nodes.map(({ nodeId, role, name, description, properties, childIds = [] }) => {
            const checked = properties?.find((property) => property.name === 'checked')?.value.value as unknown;
            const state = checked === undefined ? '' : checked === 'true' ? ', on' : ', off';
            // Who changed it last is not the same in every run.
            const text = String(description?.value ?? '').replace(/ ?Changed by .*/, '');
            const named = String(name?.value ?? '').replace(/\d+:\d\d [AP]M$/, clock);
            const line = `${String(role?.value)} ${named}${state}${text === '' ? '' : ` (${text})`}`;
            return [nodeId, { role: String(role?.value), line: line.trim(), children: childIds }];
        }),
    );
    const from = (id: string): string[] => {
        const { role, line, children } = known.get(id) ?? { role: '', line: '', children: [] };
        return [...(told.has(role) ? [line] : []), ...children.flatMap(from)];
    };
    return from(nodes[0]?.nodeId ?? '');
}

const english = languageFor('en');
/** In place of the local time. */
const clock = '0:00 AM';

/** What a screen reader reads for the row of a setting. */
function linesOf(setting: SettingKey, value: string | undefined): string[] {
    const { isShownOnly } = rows[setting];
    const [name, words] = [nameOfSetting(setting, english), wordsFor(setting, value, english)];
    const about = ` (${english.about[setting]})`;
    const onOrOff = (isOn: boolean) => (isOn ? ', on' : ', off');
    if (isReadOnly(setting)) {
        const how = english.t(setting === 'captionsEnabled' ? 'onTv.captionsEnabled' : 'onTv.doNotDisturbEnabled');
        return [`button ${name} ${words} (${english.about[setting]} ${english.t('onTv.only')} ${how})`];
    }
    if (isShownOnly) {
        return [`button ${name} ${words}${about}`];
    }
    if (isIntroduction(setting)) {
        return [`button ${english.t('introduction.again')} ${words} (${name}. ${english.about[setting]})`, 'status'];
    }
    switch (catalogue[setting].kind) {
        case 'switch':
            return [`switch ${name}${onOrOff(value === 'true')}${about}`, 'status'];
        case 'choice':
            return [`button ${name} ${words}${about}`, 'status'];
        case 'locales':
            return [
                `group ${name}`,
                `heading ${name}`,
                `button American English Primary${about}`,
                `button French (France)${about}`,
                `button Add a language${about}`,
                'status',
                'status',
            ];
        case 'timezone':
            return [`button ${name} Tokyo · ${clock}${about}`, 'status'];
        default:
            return [`button ${name} ${words}${about}`, 'status'];
    }
}

const menu = ['heading Settings', ...sectionIds.map((id) => `button ${english.t(`section.${id}`)}`)];
const accountActions = [
    'button Selected assistant This is the selected assistant',
    'button Open the assistant’s settings',
    'button Log out',
    'status',
];

test('every control has its name, state and description, and live regions are in the page from the start', async () => {
    await host.control('set', 'timezone', 'Asia/Tokyo');
    const values = JSON.parse(await host.control('--json', 'get')) as Record<string, string>;
    await visitSettings(host, async (page) => {
        for (const section of sectionIds.filter((id) => settingsOf(id).length > 0)) {
            const settings = settingsOf(section).flatMap((setting) => linesOf(setting, values[setting]));
            const more = section === 'account' ? accountActions : [];
            const heading = `heading ${english.t(`section.${section}`)}`;
            await enterSection(page, section);
            await expect
                // Who changed a setting last is told with the time, which goes on.
                .poll(async () => (await spoken(page)).map((line) => line.replace(/ Changed by .*\)$/, ')')), {
                    message: section,
                })
                .toEqual(['alert', ...menu, heading, ...settings, ...more, 'status']);
            await expect.poll(() => page.title()).toBe(`${await page.locator('main h2').innerText()} · Settings`);
        }
    });
});
