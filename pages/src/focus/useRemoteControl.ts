import type { RefObject } from 'preact';
import { useEffect, useLayoutEffect, useRef } from 'preact/hooks';

import { directionOf, focusFirst, moveFocus, placeOf, restoreFocus, type Direction, type Place } from './navigation';

export interface Zones {
    readonly menu: RefObject<HTMLElement>;
    readonly panel: RefObject<HTMLElement>;
}

function openDialog(): HTMLDialogElement | null {
    return document.querySelector('dialog[open]');
}

function isTextField(element: Element | null): boolean {
    return element instanceof HTMLInputElement;
}

/**
 * Makes the page usable with four arrows, Enter and Back (Escape). The place in each section is remembered, and the focus
 * stays where it was when what had it is drawn again or goes away. Returns: what enters the panel.
 */
export function useRemoteControl({ menu, panel }: Zones, section: string, writing: 'ltr' | 'rtl'): () => void {
    const places = useRef(new Map<string, Place>());
    /** Which zone the person is in. */
    const inside = useRef<'menu' | 'panel'>('menu');

    const toMenu = () => {
        const current = menu.current?.querySelector<HTMLElement>('[aria-current="true"]');
        current?.focus();
    };
    const toPanel = () => {
        if (panel.current !== null) {
            restoreFocus(panel.current, places.current.get(section) ?? null);
        }
    };

    const back = () => {
        if (inside.current === 'menu') {
            toMenu();
        } else {
            toPanel();
        }
    };
    /** Where to go from the end of a zone. */
    const leave = (direction: Direction, banner: HTMLElement | null) => {
        if (direction === 'forward' && inside.current === 'menu') {
            toPanel();
        } else if (direction === 'back' && inside.current === 'panel') {
            toMenu();
        } else if (direction === 'up') {
            banner?.focus();
        }
    };

    useEffect(() => {
        const remember = ({ target }: FocusEvent) => {
            const item = target as HTMLElement;
            if (panel.current?.contains(item) === true && openDialog() === null) {
                inside.current = 'panel';
                const place = placeOf(panel.current, item);
                if (place !== null) {
                    places.current.set(section, place);
                }
            } else if (menu.current?.contains(item) === true) {
                inside.current = 'menu';
            }
        };
        const press = (event: KeyboardEvent) => {
            if (event.defaultPrevented || event.ctrlKey || event.altKey || event.metaKey) {
                return;
            }
            const { activeElement } = document;
            const dialog = openDialog();
            const zone = dialog ?? (inside.current === 'menu' ? menu.current : panel.current);
            if (event.key === 'Escape' && dialog === null && inside.current === 'panel') {
                toMenu();
                event.preventDefault();
                return;
            }
            const direction = directionOf(event.key, writing);
            const sideways = direction === 'forward' || direction === 'back';
            if (direction === null || zone === null || (sideways && isTextField(activeElement))) {
                return;
            }
            event.preventDefault();
            const banner = dialog === null ? document.querySelector<HTMLElement>('.banner button') : null;
            if (banner !== null && activeElement === banner) {
                if (direction === 'down') {
                    back();
                }
            } else if (!moveFocus(zone, activeElement, direction) && dialog === null) {
                leave(direction, banner);
            }
        };
        document.addEventListener('focusin', remember);
        document.addEventListener('keydown', press);
        return () => {
            document.removeEventListener('focusin', remember);
            document.removeEventListener('keydown', press);
        };
    });

    useLayoutEffect(() => {
        const lost = document.activeElement === null || document.activeElement === document.body;
        if (!lost) {
            return;
        }
        const dialog = openDialog();
        if (dialog !== null) {
            focusFirst(dialog);
        } else {
            back();
        }
    });
    return toPanel;
}
