import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Modal } from '../components/Modal';

/** Says everything that a log-out does, and asks. */
export function LogOutDialog({ onClose }: { readonly onClose: () => void }): JSX.Element {
    const { store, language } = usePage();
    const { t } = language;
    return (
        <Modal title={t('logOut.question')} onClose={onClose}>
            {(['logOut.erases', 'logOut.turnsOff', 'logOut.keeps'] as const).map((key) => (
                <p key={key}>{t(key)}</p>
            ))}
            <div class="buttons" data-row="answer">
                <button type="button" class="button primary" onClick={onClose}>
                    {t('edit.cancel')}
                </button>
                <button
                    type="button"
                    class="button danger"
                    onClick={() => {
                        onClose();
                        void store.logOut();
                    }}
                >
                    {t('action.logOut')}
                </button>
            </div>
        </Modal>
    );
}
