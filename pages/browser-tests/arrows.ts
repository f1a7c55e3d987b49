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

/** The focusable controls in document order; each gets its number. `zones` divide the page. */
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

/** Rounding, in pixels. */
const slack = 1;

/** Whether `to` is beyond `from` in the direction of the arrow, whatever is between them. */
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

/** Whether the arrow could lead there within the zone. */
function isAhead(from: Control, to: Control, arrow: Arrow): boolean {
    const sideways = arrow === 'ArrowLeft' || arrow === 'ArrowRight';
    return to.zone === from.zone && isBeyond(from, to, arrow) && (!sideways || isBeside(from, to));
}

/** Focuses each control in turn and presses each arrow there. Returns: where each arrow led, in this order. */
async function pressEverywhere(page: Page, starts: readonly number[]): Promise<number[]> {
    const tries = starts.flatMap((start) => arrows.map((arrow) => ({ start, arrow })));
    await page.evaluate(
        (controls) => {
            const reached: number[] = [];
            const focusNext = () => {
                document.querySelector<HTMLElement>(`[data-number="${controls[reached.length]}"]`)?.focus();
            };
            Object.assign(window, { reached });
            // After each key: records the focus, and moves it for the next.
            document.addEventListener('keyup', function note() {
                reached.push(Number((document.activeElement as HTMLElement).dataset['number']));
                focusNext();
                if (reached.length === controls.length) {
                    document.removeEventListener('keyup', note);
                }
            });
            focusNext();
        },
        tries.map(({ start }) => start),
    );
    await press(page, ...tries.map(({ arrow }) => arrow));
    return page.evaluate(() => (window as unknown as { reached: number[] }).reached);
}

/** The fault of an arrow that led from one control to another, or nowhere. */
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
 * Presses each arrow on each control of the zones `from` and checks that it leads to what is drawn there: in its direction, past
 * nothing in between, and nowhere only if there is nothing; and that arrows lead from the focus to every control.
 */
export async function expectArrowsLead(
    page: Page,
    view: string,
    { zones, from: within }: { readonly zones: readonly string[]; readonly from: readonly string[] },
): Promise<void> {
    const controls = await controlsOf(page, zones);
    const reached = new Set([
        await page.evaluate(() => Number((document.activeElement as HTMLElement).dataset['number'])),
    ]);
    const starts = [...controls.keys()].filter((number) => within.includes(controls[number]?.zone ?? ''));
    const ends = await pressEverywhere(page, starts);
    expect(ends.length).toBe(starts.length * arrows.length);
    const faults: string[] = [];
    const ways = new Map<number, number[]>();
    for (const [index, end] of ends.entries()) {
        const start = starts[Math.floor(index / arrows.length)] ?? 0;
        const [from, to, arrow] = [controls[start], controls[end], arrows[index % arrows.length]];
        ways.set(start, [...(ways.get(start) ?? []), end]);
        if (from !== undefined && arrow !== undefined) {
            faults.push(faultOf(controls, from, to ?? from, arrow) ?? '');
        }
    }
    expect(faults.filter(Boolean), `arrows in ${view}`).toEqual([]);
    for (const number of reached) {
        ways.get(number)?.forEach((next) => reached.add(next));
    }
    const left = starts.filter((number) => !reached.has(number)).map((number) => controls[number]);
    expect(left, `controls that no arrow reaches in ${view}`).toEqual([]);
}
