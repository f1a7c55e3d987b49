import { afterAll, beforeAll, beforeEach, describe, expect, it, vi } from 'vitest';

import {
    directionOf,
    enterPosition,
    focusFirst,
    focusRow,
    moveFocus,
    positionOf,
    restoreFocus,
    type Direction,
} from './navigation';

const zone = document.createElement('div');

/** Where a control is drawn: `data-at="left top width"`, or else as wide as the page, each row below the one before. */
function drawn(this: HTMLElement): DOMRect {
    const row = [...zone.querySelectorAll('[data-row]')].findIndex((candidate) => candidate.contains(this));
    const [left = 0, top = row * 50, width = 1_000] = (this.dataset['at'] ?? '').split(' ').filter(Boolean).map(Number);
    return new DOMRect(left, top, width, 40);
}

beforeAll(() => {
    vi.spyOn(HTMLElement.prototype, 'getBoundingClientRect').mockImplementation(drawn);
});

afterAll(() => {
    vi.restoreAllMocks();
});

beforeEach(() => {
    zone.innerHTML = `
        <p>not to be reached</p>
        <div data-row="a"><button id="a">a</button></div>
        <div data-row="empty"><span>nothing to focus</span><button disabled>off</button></div>
        <div data-row="b">
            <button id="b1" data-at="0 100 80">1</button><button disabled>off</button>
            <button id="b2" data-at="200 100 80">2</button><input id="b3" data-at="300 100 80" />
        </div>
        <div data-row="c">
            <button role="radio" aria-checked="false" id="c1" data-at="0 150 80">1</button>
            <button role="radio" aria-checked="true" id="c2" data-at="100 150 80">2</button>
        </div>
        <div data-row="d"><div tabindex="0" id="d">d</div></div>`;
    document.body.replaceChildren(zone);
});

function walk(start: string, ...directions: Direction[]): string[] {
    document.getElementById(start)?.focus();
    return directions.map((direction) => {
        const moved = moveFocus(zone, document.activeElement, direction);
        return `${moved ? '' : 'stays at '}${document.activeElement?.id ?? ''}`;
    });
}

describe('arrows', () => {
    it('go up and down the rows that have something to focus, and stop at the ends', () => {
        expect(walk('a', 'down', 'down', 'down', 'down', 'up', 'up', 'up', 'up')).toEqual([
            'b1',
            'c2',
            'd',
            'stays at d',
            'c2',
            'b1',
            'a',
            'stays at a',
        ]);
    });

    it('go along a row past what is disabled, and stop at its ends', () => {
        expect(walk('b1', 'forward', 'forward', 'forward', 'back', 'back', 'back')).toEqual([
            'b2',
            'b3',
            'stays at b3',
            'b2',
            'b1',
            'stays at b1',
        ]);
    });

    it('lead to every line of a row, and from it to the rows above and below', () => {
        zone.innerHTML = `
            <div data-row="sizes"><button id="s" data-at="0 0 400">s</button></div>
            <div data-row="colours">
                <button role="radio" aria-checked="true" id="c1" data-at="0 50 200">1</button>
                <button role="radio" aria-checked="false" id="c2" data-at="210 50 200">2</button>
                <button role="radio" aria-checked="false" id="c3" data-at="420 50 100">3</button>
                <button role="radio" aria-checked="false" id="c4" data-at="0 100 150">4</button>
                <button role="radio" aria-checked="false" id="c5" data-at="160 100 150">5</button>
            </div>
            <div data-row="last"><button id="l" data-at="500 150 100">l</button></div>`;
        expect(walk('c3', 'forward', 'down', 'up', 'down', 'back', 'up', 'up')).toEqual([
            'stays at c3',
            'c5',
            'c2',
            'c5',
            'c4',
            'c1',
            's',
        ]);
        expect(walk('s', 'down', 'forward', 'down', 'forward', 'down', 'up')).toEqual([
            'c1',
            'c2',
            'c5',
            'stays at c5',
            'l',
            'c5',
        ]);
    });

    it('lead along rows that are drawn side by side, but not from one list into another', () => {
        zone.innerHTML = `
            <ul><li data-row="a"><button id="a" data-at="0 0 100"></button></li>
                <li data-row="b"><button id="b" data-at="110 0 100"></button></li>
                <li data-row="c"><button id="c" data-at="0 50 100"></button></li></ul>
            <div data-row="d"><button id="d" data-at="110 50 100"></button></div>`;
        expect(walk('a', 'forward', 'down', 'forward', 'down', 'up')).toEqual(['b', 'c', 'stays at c', 'd', 'c']);
    });

    it('start at the first row when the focus is nowhere', () => {
        expect(moveFocus(zone, document.body, 'down')).toBe(true);
        expect(document.activeElement?.id).toBe('a');
        zone.innerHTML = '';
        expect(focusFirst(zone)).toBe(false);
    });

    it('mean the other side where one writes from right to left', () => {
        const keys = ['ArrowLeft', 'ArrowRight', 'ArrowUp', 'ArrowDown', 'Enter'];
        expect(keys.map((key) => directionOf(key, 'ltr'))).toEqual(['back', 'forward', 'up', 'down', null]);
        expect(keys.map((key) => directionOf(key, 'rtl'))).toEqual(['forward', 'back', 'up', 'down', null]);
    });
});

describe('a position', () => {
    const tools = `<div data-row="a"><span tabindex="0" id="name">a</span><button data-tool="up" id="up">1</button>
            <button data-tool="down" id="down">2</button><button data-tool="remove" id="remove">3</button></div>
        <div data-row="b"><button data-tool="out" id="out">b</button></div>`;

    it('is found again by the name of its row, wherever that row went', () => {
        const position = positionOf(zone, document.getElementById('b2'));
        expect(position).toEqual({ row: 'b', rowNumber: 1, column: 1, tool: undefined });
        zone.prepend(zone.querySelector('[data-row="b"]') ?? '');
        restoreFocus(zone, position);
        expect(document.activeElement?.id).toBe('b2');
    });

    it('is not taken by a control that does something else', () => {
        zone.innerHTML = tools;
        const focusedAfter = (id: string, gone: string) => {
            const position = positionOf(zone, document.getElementById(id));
            document.getElementById(gone)?.setAttribute('disabled', '');
            restoreFocus(zone, position);
            document.getElementById(gone)?.removeAttribute('disabled');
            return document.activeElement?.id;
        };
        expect(focusedAfter('up', 'up')).toBe('name');
        expect(focusedAfter('down', 'down')).toBe('name');
        expect(focusedAfter('down', 'up')).toBe('down');
        expect(focusedAfter('remove', 'down')).toBe('remove');
        const position = positionOf(zone, document.getElementById('remove'));
        zone.querySelector('[data-row="a"]')?.setAttribute('data-row', 'other');
        restoreFocus(zone, position);
        expect(document.activeElement?.id).toBe('name');
    });

    it('of a row can be given by name, also where it does harm, and not where there is none', () => {
        zone.innerHTML = tools;
        expect([focusRow(zone, 'b'), document.activeElement?.id]).toEqual([true, 'out']);
        expect([focusRow(zone, 'a'), document.activeElement?.id]).toEqual([true, 'name']);
        expect(focusRow(zone, 'none')).toBe(false);
    });

    it('that would do harm at once is not entered', () => {
        zone.innerHTML = tools;
        const focusedAfter = (id: string) => {
            enterPosition(zone, positionOf(zone, document.getElementById(id)));
            return document.activeElement?.id;
        };
        expect(['name', 'up', 'remove', 'out'].map(focusedAfter)).toEqual(Array(4).fill('name'));
        expect(enterPosition(zone, null)).toBe(true);
        expect(document.activeElement?.id).toBe('name');
    });

    it('is that of the row that moved up when its own is gone, or the last', () => {
        const second = positionOf(zone, document.getElementById('b2'));
        const last = positionOf(zone, document.getElementById('d'));
        zone.querySelector('[data-row="b"]')?.remove();
        restoreFocus(zone, second);
        expect(document.activeElement?.id).toBe('c2');
        zone.querySelector('[data-row="d"]')?.remove();
        restoreFocus(zone, last);
        expect(document.activeElement?.id).toBe('c1');
        expect(positionOf(zone, document.body)).toBeNull();
    });
});
