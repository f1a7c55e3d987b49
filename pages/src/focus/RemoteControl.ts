import type { RefObject } from 'preact';

import type { SectionId } from '../sections/rows';
import { isBack, isForPage } from './keys';
import {
    directionOf,
    enterPosition,
    focusFirst,
    focusRow,
    moveFocus,
    positionOf,
    restoreFocus,
    type Direction,
    type Position,
} from './navigation';

export interface Zones {
    readonly menu: RefObject<HTMLElement>;
    readonly list: RefObject<HTMLElement>;
}
export type Writing = 'ltr' | 'rtl';

/** The section in the list, and the one that the menu is at: the list follows a little later. */
export interface Sections {
    readonly drawn: SectionId;
    readonly current: SectionId;
}

export interface Goal {
    readonly section: SectionId;
    readonly row?: string | undefined;
}

/** The states of the two entries in the browser's history: the person is in the menu, or inside a section. */
const menuEntry = 'menu';
const insideEntry = 'inside';

function openDialog(): HTMLDialogElement | null {
    return document.querySelector('dialog[open]');
}

function pushInsideEntry(): void {
    if (history.state !== insideEntry) {
        history.pushState(insideEntry, '');
    }
}

/** Moves the focus by four arrows, Enter and Back, including the browser's own Back. Remembers the position in each section. */
export class RemoteControl {
    /** What the list shows, and what it shows soon. */
    #sections: Sections;
    #writing: Writing = 'ltr';
    readonly #positions = new Map<string, Position>();
    /** Where to go once the section is drawn. */
    #goal: Goal | null = null;
    #zone: 'menu' | 'list' = 'menu';
    readonly #zones: Zones;
    readonly #draw: (section: SectionId) => void;

    /** `draw`: draws a section at once. */
    constructor(zones: Zones, section: SectionId, draw: (section: SectionId) => void) {
        this.#zones = zones;
        this.#draw = draw;
        this.#sections = { drawn: section, current: section };
    }

    /** To be called after each rendering. */
    update(sections: Sections, writing: Writing): void {
        this.#sections = sections;
        this.#writing = writing;
        if (history.state === null) {
            history.replaceState(menuEntry, '');
        }
        if (this.#goal?.section === sections.drawn && this.#list !== null) {
            const { row } = this.#goal;
            this.#goal = null;
            if (row === undefined) {
                this.#enterList();
            } else if (!focusRow(this.#list, row)) {
                focusFirst(this.#list);
            }
        }
    }

    /** Returns: a function that removes the event handlers. */
    start(): () => void {
        document.addEventListener('focusin', this.#handleFocus);
        document.addEventListener('keydown', this.#handleKey);
        window.addEventListener('popstate', this.#handleHistory);
        return () => {
            document.removeEventListener('focusin', this.#handleFocus);
            document.removeEventListener('keydown', this.#handleKey);
            window.removeEventListener('popstate', this.#handleHistory);
        };
    }

    /** Focuses a row, or where the focus was, once the section is drawn. */
    enterAt(goal: Goal): void {
        this.#goal = goal;
        this.#draw(goal.section);
        this.update(this.#sections, this.#writing);
    }

    #enterList(focusPosition = enterPosition): void {
        const { drawn, current } = this.#sections;
        if (drawn !== current) {
            this.enterAt({ section: current });
        } else if (this.#list !== null) {
            focusPosition(this.#list, this.#positions.get(drawn) ?? null);
        }
    }

    /** Puts the focus back after a rendering that removed or disabled the focused element. */
    recoverFocus(): void {
        const active = document.activeElement;
        const isLost = active === null || active === document.body || active.matches(':disabled');
        if (!isLost) {
            return;
        }
        const dialog = openDialog();
        if (dialog !== null) {
            focusFirst(dialog);
        } else {
            this.#returnToZone();
        }
    }

    get #menu(): HTMLElement | null {
        return this.#zones.menu.current;
    }

    get #list(): HTMLElement | null {
        return this.#zones.list.current;
    }

    #enterMenu(): void {
        this.#menu?.querySelector<HTMLElement>('[aria-current="true"]')?.focus();
    }

    #returnToZone(): void {
        if (this.#zone === 'menu') {
            this.#enterMenu();
        } else {
            this.#enterList(restoreFocus);
        }
    }

    /** Closes an open dialog or editor, puts back what was picked up, or goes to the menu. Returns: false when the focus is in the menu already. */
    #stepBack(): boolean {
        const open = openDialog() ?? document.querySelector('[data-picked-up]');
        const editor = document.activeElement?.closest('form');
        if (open !== null) {
            open.dispatchEvent(new Event('cancel', { cancelable: true }));
        } else if (editor instanceof HTMLFormElement) {
            editor.reset();
        } else if (this.#zone === 'list') {
            this.#enterMenu();
        } else {
            return false;
        }
        return true;
    }

    /** Leaves the zone at its end. The list is beside the menu, or below it on a narrow screen. */
    #leaveZone(direction: Direction, banner: HTMLElement | null): void {
        const [menu, list] = [this.#menu?.getBoundingClientRect(), this.#list?.getBoundingClientRect()];
        // Not by their heights: the menu stays at the top while the list scrolls beneath it.
        const isBelow = menu !== undefined && list !== undefined && menu.left < list.right && list.left < menu.right;
        if (this.#zone === 'menu' && direction === (isBelow ? 'down' : 'forward')) {
            this.#enterList();
        } else if (this.#zone === 'list' && direction === (isBelow ? 'up' : 'back')) {
            this.#enterMenu();
        } else if (direction === 'up') {
            banner?.focus();
        }
    }

    readonly #handleFocus = ({ target }: FocusEvent): void => {
        const item = target as HTMLElement;
        if (this.#list?.contains(item) === true && openDialog() === null) {
            this.#zone = 'list';
            pushInsideEntry();
            const position = positionOf(this.#list, item);
            if (position !== null) {
                this.#positions.set(this.#sections.drawn, position);
            }
        } else if (this.#menu?.contains(item) === true) {
            this.#zone = 'menu';
        }
    };

    readonly #handleKey = (event: KeyboardEvent): void => {
        if (!isForPage(event)) {
            return;
        }
        if (isBack(event.key)) {
            if (this.#stepBack()) {
                event.preventDefault();
            }
            return;
        }
        const direction = directionOf(event.key, this.#writing);
        const isSideways = direction === 'forward' || direction === 'back';
        if (direction !== null && !(isSideways && document.activeElement instanceof HTMLInputElement)) {
            this.#move(direction, event);
        }
    };

    #move(direction: Direction, event: KeyboardEvent): void {
        const { activeElement } = document;
        const dialog = openDialog();
        const zone = dialog ?? (this.#zone === 'menu' ? this.#menu : this.#list);
        if (zone === null) {
            return;
        }
        event.preventDefault();
        const banner = dialog === null ? document.querySelector<HTMLElement>('.banner button') : null;
        if (banner !== null && activeElement === banner) {
            if (direction === 'down') {
                this.#returnToZone();
            }
        } else if (!moveFocus(zone, activeElement, direction) && dialog === null) {
            this.#leaveZone(direction, banner);
        }
    }

    /** The browser went to another entry of its history. */
    readonly #handleHistory = ({ state }: PopStateEvent): void => {
        // The entry may be older than the section that is shown.
        history.replaceState(state ?? menuEntry, '', `#${this.#sections.current}`);
        if (state === null) {
            return;
        }
        if (state === insideEntry) {
            this.#enterList();
        } else if (!this.#stepBack()) {
            history.back();
        } else if (this.#zone === 'list') {
            pushInsideEntry();
        }
    };
}
