import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Modal } from '../components/Modal';

/** Says everything that a log-out does, and asks. */
export function LogOutDialog({ onClose }: { readonly onClose: () => void }): JSX.Element {
    const { store, language } = usePage();
    const { t } = language;
    return (
        <Modal title={t('logOut.question')} onClose={onClose}>
            {(['erases', 'turnsOff', 'keeps'] as const).map((part) => (
                <p key={part}>{t(`logOut.${part}`)}</p>
            ))}
            <div class="buttons" data-row="answer">
                <button type="button" class="button primary" onClick={onClose}>
                    {t('cancel')}
                </button>
                <button
                    type="button"
                    class="button danger"
                    onClick={() => {
                        onClose();
                        void store.logOut();
                    }}
                >
                    {t('logOut')}
                </button>
            </div>
        </Modal>
    );
}
