import type { JSX } from 'preact';

import { ActionRow } from '../components/ActionRow';
import { usePage } from '../components/context';
import { Dialog } from '../components/Dialog';
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
        <Dialog title={name} onClose={onClose}>
            {isAlone && <p class="about">{t('locale.last')}</p>}
            {!isAlone && (
                <>
                    <ActionRow
                        row="move"
                        icon="move"
                        name={t('locale.move')}
                        onUse={closing(() => {
                            pickUp(index);
                        })}
                    />
                    {index > 0 && (
                        <ActionRow
                            row="primary"
                            icon="up"
                            name={t('locale.makePrimary')}
                            onUse={closing(() => {
                                change(movedTo(locales, index, 0));
                            })}
                        />
                    )}
                    <ActionRow
                        row="remove"
                        icon="remove"
                        name={t('locale.remove')}
                        onUse={closing(() => {
                            change(without(locales, index));
                        })}
                    />
                </>
            )}
            <ActionRow row="cancel" name={t('cancel')} onUse={onClose} />
        </Dialog>
    );
}
