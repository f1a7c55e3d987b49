import type { ComponentChildren, JSX } from 'preact';
import { useLayoutEffect, useRef } from 'preact/hooks';

import { focusChosen } from '../focus/navigation';

interface Props {
    readonly class?: 'panel' | 'panel wide';
    readonly title: string;
    readonly onClose: () => void;
    readonly children: ComponentChildren;
}

/** Brings a message in front of what was opened since it was shown. */
export function showAgain(message: HTMLElement): void {
    message.hidePopover();
    message.showPopover();
}

/** In front of the page, in its middle unless it is a panel. Back closes it; the focus returns to where it was. */
export function Modal({ class: name, title, onClose, children }: Props): JSX.Element {
    const dialog = useRef<HTMLDialogElement>(null);
    useLayoutEffect(() => {
        const element = dialog.current;
        const before = document.activeElement;
        element?.showModal();
        // Messages stay in front: of the top layer, what was shown last is.
        document.querySelectorAll<HTMLElement>(':popover-open').forEach(showAgain);
        if (element !== null && document.activeElement?.matches('[autofocus]') !== true) {
            focusChosen(element);
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
            class={name}
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
