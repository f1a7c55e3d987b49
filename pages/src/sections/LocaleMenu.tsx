import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Modal } from '../components/Modal';
import { Row } from '../components/Row';
import { movedTo, without } from './locales';
import type { Locales } from './useLocales';

interface Props {
    readonly name: string;
    readonly index: number;
    readonly list: Locales;
    readonly onClose: () => void;
}

/** What a person can do with one language. First what repeated Enter takes back itself. */
export function LocaleMenu({ name, index, list, onClose }: Props): JSX.Element {
    const { t } = usePage().language;
    const { locales, change, pickUp } = list;
    const isAlone = locales.length === 1;
    const closing = (act: () => void) => () => {
        onClose();
        act();
    };
    return (
        <Modal title={name} onClose={onClose}>
            {isAlone && <p class="about">{t('locale.last')}</p>}
            {!isAlone && (
                <>
                    <Row
                        kind="acts"
                        row="move"
                        icon="move"
                        name={t('locale.move')}
                        onUse={closing(() => {
                            pickUp(index);
                        })}
                    />
                    {index > 0 && (
                        <Row
                            kind="acts"
                            row="primary"
                            icon="up"
                            name={t('locale.makePrimary')}
                            onUse={closing(() => {
                                change(movedTo(locales, index, 0));
                            })}
                        />
                    )}
                    <Row
                        kind="acts"
                        row="remove"
                        icon="remove"
                        name={t('locale.remove')}
                        onUse={closing(() => {
                            change(without(locales, index));
                        })}
                    />
                </>
            )}
            <Row kind="acts" row="cancel" name={t('edit.cancel')} onUse={onClose} />
        </Modal>
    );
}
