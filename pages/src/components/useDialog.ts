import { useCallback, useState } from 'preact/hooks';

/** Whether a dialog is open, and what opens and closes it. */
export function useDialog(): { readonly isOpen: boolean; readonly open: () => void; readonly close: () => void } {
    const [isOpen, setOpen] = useState(false);
    const open = useCallback(() => {
        setOpen(true);
    }, []);
    const close = useCallback(() => {
        setOpen(false);
    }, []);
    return { isOpen, open, close };
}
