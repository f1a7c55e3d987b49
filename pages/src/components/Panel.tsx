import type { ComponentChildren, JSX } from 'preact';

import { Icon } from '../icons';
import { usePage } from './context';
import { Modal } from './Modal';

interface Props {
    /** As wide as the page, or as the list. */
    readonly class?: 'panel wide' | 'panel';
    readonly title: string;
    /** Shown beside the panel as long as it is open. */
    readonly explanation?: ComponentChildren;
    readonly onClose: () => void;
    readonly children: ComponentChildren;
}

/** A list of its own, as high as the page. */
export function Panel({ class: name = 'panel', explanation, children, ...modal }: Props): JSX.Element {
    const { t } = usePage().language;
    return (
        <Modal class={name} {...modal}>
            <button
                type="button"
                class="tool close"
                data-tool="close"
                aria-label={t('edit.close')}
                onClick={modal.onClose}
            >
                <Icon name="remove" />
            </button>
            {explanation !== undefined && <div class="explanation">{explanation}</div>}
            {children}
        </Modal>
    );
}
