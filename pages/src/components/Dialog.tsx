import type { ComponentChildren, JSX } from 'preact';

import { Modal } from './Modal';

interface Props {
    readonly title: string;
    readonly onClose: () => void;
    readonly children: ComponentChildren;
}

/** A question in the middle of the page. */
export function Dialog(props: Props): JSX.Element {
    return <Modal class="dialog" {...props} />;
}
