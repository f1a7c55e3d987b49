import type { Page } from 'playwright-core';
import { expect } from 'vitest';

import { press } from './settings';

const arrows = ['ArrowUp', 'ArrowDown', 'ArrowLeft', 'ArrowRight'] as const;
type Arrow = (typeof arrows)[number];

interface Control {
    readonly name: string;
    readonly zone: string;
    readonly left: number;
    readonly right: number;
    readonly top: number;
    readonly bottom: number;
}

/** What can take the focus, in the order of the page; each carries its number from now on. `zones` share the page out. */
function controlsOf(page: Page, zones: readonly string[]): Promise<Control[]> {
    return page.evaluate((selectors) => {
        const controls = document.querySelectorAll<HTMLElement>(
            ':is(button, input, select):not(:disabled), [tabindex="0"]',
        );
        return [...controls].map((control, number) => {
            control.dataset['number'] = `${number}`;
            const { left, right, top, bottom } = control.getBoundingClientRect();
            const name = control.getAttribute('aria-label') ?? control.textContent;
            const zone = selectors.find((selector) => control.closest(selector) !== null) ?? '';
            return { name: `${number} ${name.slice(0, 40)}`, zone, left, right, top, bottom };
        });
    }, zones);
}

/** A pixel's worth of rounding. */
const slack = 1;

/** Lies `to` beyond `from` in the direction of the arrow, whatever is between them? */
function isBeyond(from: Control, to: Control, arrow: Arrow): boolean {
    switch (arrow) {
        case 'ArrowUp':
            return to.bottom <= from.top + slack;
        case 'ArrowDown':
            return to.top >= from.bottom - slack;
        case 'ArrowLeft':
            return to.right <= from.left + slack;
        case 'ArrowRight':
            return to.left >= from.right - slack;
    }
}

function isBeside(one: Control, other: Control): boolean {
    return one.top < other.bottom && other.top < one.bottom;
}

/** Could the arrow lead there without leaving the zone? */
function isAhead(from: Control, to: Control, arrow: Arrow): boolean {
    const sideways = arrow === 'ArrowLeft' || arrow === 'ArrowRight';
    return to.zone === from.zone && isBeyond(from, to, arrow) && (!sideways || isBeside(from, to));
}

function focusedNumber(page: Page): Promise<number> {
    return page.evaluate(() => Number((document.activeElement as HTMLElement).dataset['number']));
}

/** What is wrong with an arrow that led from one control to another, or nowhere. */
function faultOf(controls: readonly Control[], from: Control, to: Control, arrow: Arrow): string | null {
    const ahead = controls.filter((other) => isAhead(from, other, arrow));
    if (to === from) {
        return ahead[0] === undefined ? null : `${arrow} stays at ${from.name}, but there is ${ahead[0].name}`;
    }
    if (!isBeyond(from, to, arrow)) {
        return `${arrow} leads from ${from.name} to ${to.name}, which is not there`;
    }
    const between = ahead.find((other) => other !== to && isAhead(other, to, arrow));
    return between === undefined ? null : `${arrow} leads from ${from.name} past ${between.name} to ${to.name}`;
}

/**
 * Tries each arrow on each control of the zones `from` and insists that it leads to what is drawn there: in its direction, past
 * nothing that stands between, and nowhere only if there is nothing; and that arrows lead from the focus to every control.
 */
export async function expectArrowsLead(
    page: Page,
    view: string,
    { zones, from: within }: { readonly zones: readonly string[]; readonly from: readonly string[] },
): Promise<void> {
    const controls = await controlsOf(page, zones);
    const reached = new Set([await focusedNumber(page)]);
    const faults: string[] = [];
    const ways = new Map<number, number[]>();
    for (const [number, from] of controls.entries()) {
        for (const arrow of within.includes(from.zone) ? arrows : []) {
            await page.locator(`[data-number="${number}"]`).focus();
            await press(page, arrow);
            const next = await focusedNumber(page);
            ways.set(number, [...(ways.get(number) ?? []), next]);
            faults.push(faultOf(controls, from, controls[next] ?? from, arrow) ?? '');
        }
    }
    expect(faults.filter(Boolean), `arrows in ${view}`).toEqual([]);
    for (const number of reached) {
        ways.get(number)?.forEach((next) => reached.add(next));
    }
    const left = controls.filter(({ zone }, number) => within.includes(zone) && !reached.has(number));
    expect(left, `what no arrow reaches in ${view}`).toEqual([]);
}
