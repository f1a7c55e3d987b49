import { useMemo, useState } from 'preact/hooks';

/** Whether a dialog is open, and what opens and closes it. */
export function useDialog(): { readonly isOpen: boolean; readonly open: () => void; readonly close: () => void } {
    const [isOpen, setOpen] = useState(false);
    const actions = useMemo(
        () => ({
            open: () => {
                setOpen(true);
            },
            close: () => {
                setOpen(false);
            },
        }),
        [],
    );
    return { isOpen, ...actions };
}
