import type { Page } from 'playwright-core';
import { catalogue, type SettingKey } from 'settings-client';
import { expect, test } from 'vitest';

import { languageFor } from '../src/i18n/language';
import { rows, settingsOf } from '../src/sections/rows';
import { isReadOnly } from '../src/settings/catalogue';
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
            const text = String(description?.value ?? '').replace(/ ?Last changed by .*/, '');
            const line = `${String(role?.value)} ${String(name?.value ?? '')}${state}${text === '' ? '' : ` (${text})`}`;
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

/** What a screen reader reads for the row of a setting. */
function linesOf(setting: SettingKey, value: string | undefined): string[] {
    const { about: key, isShownOnly } = rows[setting];
    const [name, words] = [nameOfSetting(setting, english), wordsFor(setting, value, english)];
    const about = key === undefined ? '' : ` (${english.t(key)})`;
    const onOrOff = (isOn: boolean) => (isOn ? ', on' : ', off');
    if (isReadOnly(setting)) {
        const reason = english.t('setOnDevice');
        return [`button ${name} ${words} (${key === undefined ? reason : `${english.t(key)} ${reason}`})`];
    }
    if (isShownOnly) {
        return [`button ${name} ${words}`];
    }
    switch (catalogue[setting].kind) {
        case 'switch':
            return [`switch ${name}${onOrOff(value === 'true')}${about}`, 'status'];
        case 'choice':
            return [`button ${name} ${words}`, 'status'];
        case 'locales':
            return [
                `group ${name}`,
                `heading ${name}`,
                'group American English, Primary',
                'button Move American English down',
                'button Remove American English',
                'group French (France)',
                'button Move French (France) up',
                'button Remove French (France)',
                'status',
                'button Add a language',
            ];
        default:
            return [`button ${name} ${words}${about}`, 'status'];
    }
}

const menu = [
    'heading Settings',
    ...['Device', 'Language and region', 'Captions', 'Voice', 'Do not disturb', 'Account'].map(
        (name) => `button ${name}`,
    ),
];
const accountActions = [
    'button Selected assistant This is the selected assistant',
    'button Open the assistant’s settings',
    'button Log out',
    'status',
];

test('every control has its name, state and description, and live regions are in the page from the start', async () => {
    const values = JSON.parse(await host.control('--json', 'get')) as Record<string, string>;
    await visitSettings(host, async (page) => {
        for (const section of sectionIds) {
            const settings = settingsOf(section).flatMap((setting) => linesOf(setting, values[setting]));
            const more = section === 'account' ? accountActions : [];
            const heading = `heading ${english.t(`section.${section}`)}`;
            await enterSection(page, section);
            await expect
                .poll(() => spoken(page), { message: section })
                .toEqual(['alert', ...menu, heading, ...settings, ...more, 'status']);
            await expect.poll(() => page.title()).toBe(`${await page.locator('main h2').innerText()} · Settings`);
        }
    });
});
