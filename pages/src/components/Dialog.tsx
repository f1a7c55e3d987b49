import type { ComponentChildren, JSX } from 'preact';
import { useLayoutEffect, useRef } from 'preact/hooks';

import { focusFirst } from '../focus/navigation';

interface Props {
    readonly title: string;
    readonly onClose: () => void;
    readonly children: ComponentChildren;
}

/** A question in front of the page. Escape closes it; the focus returns to where it was. */
export function Dialog({ title, onClose, children }: Props): JSX.Element {
    const dialog = useRef<HTMLDialogElement>(null);
    useLayoutEffect(() => {
        const element = dialog.current;
        const before = document.activeElement;
        element?.showModal();
        if (element !== null) {
            focusFirst(element);
        }
        return () => {
            element?.close();
            if (before instanceof HTMLElement) {
                before.focus();
            }
        };
    }, []);
    return (
        <dialog
            ref={dialog}
            aria-label={title}
            onCancel={(event) => {
                event.preventDefault();
                onClose();
            }}
        >
            <h2>{title}</h2>
            {children}
        </dialog>
    );
}
