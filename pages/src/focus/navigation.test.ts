import { beforeEach, describe, expect, it } from 'vitest';

import { directionOf, focusFirst, moveFocus, placeOf, restoreFocus, type Direction } from './navigation';

const zone = document.createElement('div');

beforeEach(() => {
    zone.innerHTML = `
        <p>not to be reached</p>
        <div data-row="a"><button id="a">a</button></div>
        <div data-row="empty"><span>nothing to focus</span><button disabled>off</button></div>
        <div data-row="b"><button id="b1">1</button><button disabled>off</button><button id="b2">2</button><input id="b3" /></div>
        <div data-row="c">
            <button role="radio" aria-checked="false" id="c1">1</button>
            <button role="radio" aria-checked="true" id="c2">2</button>
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
            'b2',
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

describe('a place', () => {
    it('is found again by the name of its row, wherever that row went', () => {
        const place = placeOf(zone, document.getElementById('b2'));
        expect(place).toEqual({ row: 'b', rowNumber: 1, column: 1, tool: undefined });
        zone.prepend(zone.querySelector('[data-row="b"]') ?? '');
        restoreFocus(zone, place);
        expect(document.activeElement?.id).toBe('b2');
    });

    it('is not taken by a control that does something else', () => {
        zone.innerHTML = `<div data-row="a"><button data-tool="up" id="up">1</button>
            <button data-tool="down" id="down">2</button><button data-tool="remove" id="remove">3</button></div>`;
        const focusedAfter = (id: string, gone: string) => {
            const place = placeOf(zone, document.getElementById(id));
            document.getElementById(gone)?.setAttribute('disabled', '');
            restoreFocus(zone, place);
            document.getElementById(gone)?.removeAttribute('disabled');
            return document.activeElement?.id;
        };
        expect(focusedAfter('down', 'down')).toBe('up');
        expect(focusedAfter('up', 'up')).toBe('down');
        expect(focusedAfter('remove', 'down')).toBe('remove');
        const place = placeOf(zone, document.getElementById('remove'));
        zone.innerHTML = '<div data-row="add"><button id="add">add</button></div>';
        restoreFocus(zone, place);
        expect(document.activeElement?.id).toBe('add');
    });

    it('is that of the row that moved up when its own is gone, or the last', () => {
        const second = placeOf(zone, document.getElementById('b2'));
        const last = placeOf(zone, document.getElementById('d'));
        zone.querySelector('[data-row="b"]')?.remove();
        restoreFocus(zone, second);
        expect(document.activeElement?.id).toBe('c2');
        zone.querySelector('[data-row="d"]')?.remove();
        restoreFocus(zone, last);
        expect(document.activeElement?.id).toBe('c1');
        expect(placeOf(zone, document.body)).toBeNull();
    });
});
