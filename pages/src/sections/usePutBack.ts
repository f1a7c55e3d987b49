import { useLayoutEffect } from 'preact/hooks';

import type { Locales } from './useLocales';

/** The row keeps the focus while it is carried; where the focus goes elsewhere, it is put back. */
export function usePutBack(item: { readonly current: HTMLLIElement | null }, isPickedUp: boolean, list: Locales): void {
    // Before the next key: a row that was moved in the page has lost the focus.
    useLayoutEffect(() => {
        if (!isPickedUp) {
            return undefined;
        }
        const handleFocus = ({ target }: FocusEvent) => {
            if (target instanceof Node && item.current?.contains(target) === false) {
                list.putBack();
            }
        };
        item.current?.querySelector('button')?.focus();
        document.addEventListener('focusin', handleFocus);
        return () => {
            document.removeEventListener('focusin', handleFocus);
        };
    });
}
