import type { Page } from 'playwright-core';
import { expect, test } from 'vitest';

import type { SectionId } from '../src/sections/rows';
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
            const text = String(description?.value ?? '');
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

const introduced = '(Turn this off to see the introduction again.)';
const sections: Record<SectionId, string[]> = {
    device: [
        'heading Device',
        'button Device name TV',
        'status',
        'button Friendly name TV (What you call this TV when you talk to the assistant.)',
        'status',
        'button Companion device Not set (The phone or tablet paired with this TV.)',
        'status',
    ],
    language: [
        'heading Language and region',
        'group Assistant languages',
        'heading Assistant languages',
        'group American English, Primary',
        'button Move American English down',
        'button Remove American English',
        'group French (France)',
        'button Move French (France) up',
        'button Remove French (France)',
        'status',
        'button Add a language',
        'button Time zone America/Vancouver',
        'status',
    ],
    captions: [
        'heading Captions',
        'group Captions: Off. Set on the device.',
        'radiogroup Text size',
        'radio Small, off',
        'radio Medium, on',
        'radio Large, off',
        'radio Extra large, off',
        'status',
        'radiogroup Colours',
        'radio White on black, on',
        'radio Black on white, off',
        'radio Yellow on black, off',
        'radio Yellow on blue, off',
        'status',
    ],
    voice: [
        'heading Voice',
        'switch Hands-free, on (Talk to the assistant without the remote control.)',
        'status',
        'switch Always on by voice, off (The wake word works even when the screen is off.)',
        'status',
        `switch Introduction to “Always on by voice” seen, off ${introduced}`,
        'status',
        'switch Always on by push-to-talk, off (The microphone button works even when the screen is off.)',
        'status',
        `switch Introduction to “Always on by push-to-talk” seen, off ${introduced}`,
        'status',
    ],
    doNotDisturb: [
        'heading Do not disturb',
        'group Do not disturb: Off. Set on the device. While this is on, the assistant stays silent unless you speak to it.',
    ],
    account: [
        'heading Account',
        'group Entitlement: active',
        'group Selected assistant: This is the selected assistant',
        'button Open the assistant’s settings',
        'button Log out',
        'status',
    ],
};
const menu = [
    'heading Settings',
    ...['Device', 'Language and region', 'Captions', 'Voice', 'Do not disturb', 'Account'].map(
        (name) => `button ${name}`,
    ),
];

test('every control has its name, state and description, and live regions are in the page from the start', async () => {
    await visitSettings(host, async (page) => {
        for (const section of sectionIds) {
            await enterSection(page, section);
            await expect
                .poll(() => spoken(page), { message: section })
                .toEqual(['alert', ...menu, ...sections[section], 'status']);
            await expect.poll(() => page.title()).toBe(`${await page.locator('main h2').innerText()} · Settings`);
        }
    });
});
