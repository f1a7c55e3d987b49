import type { RefObject } from 'preact';
import { useLayoutEffect, useRef } from 'preact/hooks';

import { isBack } from './keys';
import {
    directionOf,
    enterPlace,
    focusFirst,
    moveFocus,
    placeOf,
    restoreFocus,
    type Direction,
    type Place,
} from './navigation';

export interface Zones {
    readonly menu: RefObject<HTMLElement>;
    readonly panel: RefObject<HTMLElement>;
}

/** The states of the entries in the browser's history that stand for being in the menu and inside a section. */
const menuEntry = 'menu';
const insideEntry = 'inside';

function openDialog(): HTMLDialogElement | null {
    return document.querySelector('dialog[open]');
}

function isTextField(element: Element | null): boolean {
    return element instanceof HTMLInputElement;
}

function rememberInHistory(): void {
    if (history.state !== insideEntry) {
        history.pushState(insideEntry, '');
    }
}

/**
 * Makes the page usable with four arrows, Enter and Back, the browser's own Back too. The place in each section is remembered,
 * and the focus stays where it was when what had it is drawn again or goes away. Returns: what enters the panel.
 */
export function useRemoteControl({ menu, panel }: Zones, section: string, writing: 'ltr' | 'rtl'): () => void {
    const places = useRef(new Map<string, Place>());
    /** Which zone the person is in. */
    const inside = useRef<'menu' | 'panel'>('menu');

    const toMenu = () => {
        const current = menu.current?.querySelector<HTMLElement>('[aria-current="true"]');
        current?.focus();
    };
    const toPanel = (focusPlace = enterPlace) => {
        if (panel.current !== null) {
            focusPlace(panel.current, places.current.get(section) ?? null);
        }
    };

    const toWhereItWas = () => {
        if (inside.current === 'menu') {
            toMenu();
        } else {
            toPanel(restoreFocus);
        }
    };
    /** Closes what is open, or goes to the menu. Returns: false when the person is there already. */
    const stepBack = (): boolean => {
        const dialog = openDialog();
        const editor = document.activeElement?.closest('form');
        if (dialog !== null) {
            dialog.dispatchEvent(new Event('cancel', { cancelable: true }));
        } else if (editor instanceof HTMLFormElement) {
            editor.reset();
        } else if (inside.current === 'panel') {
            toMenu();
        } else {
            return false;
        }
        return true;
    };
    /** Where to go from the end of a zone: the panel is beside the menu, or below it on a narrow screen. */
    const leave = (direction: Direction, banner: HTMLElement | null) => {
        const [upper, lower] = [menu.current?.getBoundingClientRect(), panel.current?.getBoundingClientRect()];
        const isBelow = upper !== undefined && lower !== undefined && upper.bottom <= lower.top;
        if (inside.current === 'menu' && direction === (isBelow ? 'down' : 'forward')) {
            toPanel();
        } else if (inside.current === 'panel' && direction === (isBelow ? 'up' : 'back')) {
            toMenu();
        } else if (direction === 'up') {
            banner?.focus();
        }
    };

    // Before the next key: with an effect after the picture a quick person would be a section ahead of it.
    useLayoutEffect(() => {
        const remember = ({ target }: FocusEvent) => {
            const item = target as HTMLElement;
            if (panel.current?.contains(item) === true && openDialog() === null) {
                inside.current = 'panel';
                rememberInHistory();
                const place = placeOf(panel.current, item);
                if (place !== null) {
                    places.current.set(section, place);
                }
            } else if (menu.current?.contains(item) === true) {
                inside.current = 'menu';
            }
        };
        const press = (event: KeyboardEvent) => {
            if (event.defaultPrevented || event.isComposing || event.ctrlKey || event.altKey || event.metaKey) {
                return;
            }
            if (isBack(event.key)) {
                if (stepBack()) {
                    event.preventDefault();
                }
                return;
            }
            const { activeElement } = document;
            const dialog = openDialog();
            const zone = dialog ?? (inside.current === 'menu' ? menu.current : panel.current);
            const direction = directionOf(event.key, writing);
            const sideways = direction === 'forward' || direction === 'back';
            if (direction === null || zone === null || (sideways && isTextField(activeElement))) {
                return;
            }
            event.preventDefault();
            const banner = dialog === null ? document.querySelector<HTMLElement>('.banner button') : null;
            if (banner !== null && activeElement === banner) {
                if (direction === 'down') {
                    toWhereItWas();
                }
            } else if (!moveFocus(zone, activeElement, direction) && dialog === null) {
                leave(direction, banner);
            }
        };
        /** The browser went to another entry of its history by itself. */
        const wentInHistory = ({ state }: PopStateEvent) => {
            // The entry may be older than the section that is shown.
            history.replaceState(state ?? menuEntry, '', `#${section}`);
            if (state === null) {
                return;
            }
            if (state === insideEntry) {
                toPanel();
            } else if (!stepBack()) {
                history.back();
            } else if (inside.current === 'panel') {
                rememberInHistory();
            }
        };
        if (history.state === null) {
            history.replaceState(menuEntry, '');
        }
        document.addEventListener('focusin', remember);
        document.addEventListener('keydown', press);
        window.addEventListener('popstate', wentInHistory);
        return () => {
            document.removeEventListener('focusin', remember);
            document.removeEventListener('keydown', press);
            window.removeEventListener('popstate', wentInHistory);
        };
    });

    useLayoutEffect(() => {
        const active = document.activeElement;
        const lost = active === null || active === document.body || active.matches(':disabled');
        if (!lost) {
            return;
        }
        const dialog = openDialog();
        if (dialog !== null) {
            focusFirst(dialog);
        } else {
            toWhereItWas();
        }
    });
    return toPanel;
}
