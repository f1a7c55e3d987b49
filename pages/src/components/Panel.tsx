import type { ComponentChildren, JSX } from 'preact';

import { Icon } from '../icons';
import { usePage } from './context';
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
    const { t } = usePage().language;
    return (
        <Modal class="panel" {...modal}>
            <button type="button" class="tool close" data-tool="close" aria-label={t('close')} onClick={modal.onClose}>
                <Icon name="remove" />
            </button>
            {explanation !== undefined && <div class="explanation">{explanation}</div>}
            {children}
        </Modal>
    );
}
