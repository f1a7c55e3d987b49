import type { ComponentChildren, JSX } from 'preact';
import { useRef } from 'preact/hooks';

import { usePage } from '../components/context';
import { Row } from '../components/Row';
import { Tool } from '../components/Tool';
import { useDialog } from '../components/useDialog';
import { nameOfLocale } from '../i18n/language';
import { shortened } from '../settings/format';
import { CarryButtons } from './CarryButtons';
import { LocaleMenu } from './LocaleMenu';
import type { Locales } from './useLocales';
import { usePutBack } from './usePutBack';

interface Props {
    readonly row: string;
    readonly locale: string;
    readonly index: number;
    readonly list: Locales;
    readonly hasUndo: boolean;
    readonly explanation: ComponentChildren;
}

/** One language of the assistant. Enter opens its menu, or drops it when it was picked up. */
export function LocaleRow({ row, locale, index, list, hasUndo, explanation }: Props): JSX.Element {
    const { t, code } = usePage().language;
    const menu = useDialog();
    const item = useRef<HTMLLIElement>(null);
    const name = shortened(nameOfLocale(locale, code));
    const isPickedUp = list.pickedUp?.index === index;
    usePutBack(item, isPickedUp, list);
    const undo = hasUndo ? <Tool tool="undo" words={t('change.undo')} onUse={list.undo} /> : undefined;
    const tools = isPickedUp ? <CarryButtons list={list} /> : undo;
    return (
        <li ref={item} data-picked-up={isPickedUp || undefined} onCancel={list.putBack}>
            <Row
                kind="opens"
                row={row}
                icon={isPickedUp ? 'move' : 'language'}
                name={name}
                value={index === 0 ? t('locale.primary') : undefined}
                opensDialog={!isPickedUp}
                explanation={explanation}
                tools={tools}
                onUse={isPickedUp ? list.drop : menu.open}
            >
                {menu.isOpen && <LocaleMenu name={name} index={index} list={list} onClose={menu.close} />}
            </Row>
        </li>
    );
}
