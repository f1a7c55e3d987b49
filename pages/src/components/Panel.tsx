import type { ComponentChildren, JSX } from 'preact';

import { Modal } from './Modal';

interface Props {
    readonly title: string;
    /** Shown beside the panel as long as it is open. */
    readonly explanation?: ComponentChildren;
    readonly onClose: () => void;
    readonly children: ComponentChildren;
}

/** A list of its own, as high as the page. */
export function Panel({ explanation, children, ...modal }: Props): JSX.Element {
    return (
        <Modal class="panel" {...modal}>
            {explanation !== undefined && <div class="explanation">{explanation}</div>}
            {children}
        </Modal>
    );
}
