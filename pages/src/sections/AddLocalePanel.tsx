import type { JSX } from 'preact';
import { useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { Count } from '../components/Count';
import { Field } from '../components/Field';
import { Panel } from '../components/Panel';
import { Tiles } from '../components/Tiles';
import { isTyped } from '../focus/keys';
import { focusRow } from '../focus/navigation';
import { found } from '../settings/search';
import { languageOf, languageOffers, localeOffers, middleOf, type Offer } from './offers';

interface Props {
    /** The locales that are set. */
    readonly set: readonly string[];
    readonly onChoose: (locale: string) => void;
    readonly onClose: () => void;
}

/** Offers languages, then the locales of one that has several; or what a search finds. What is typed anywhere is searched. */
export function AddLocalePanel({ set, onChoose, onClose }: Props): JSX.Element {
    const { t, code } = usePage().language;
    const [typed, setTyped] = useState('');
    const [language, setLanguage] = useState<Offer | null>(null);
    const place = useRef<HTMLDivElement>(null);
    const locales = useMemo(() => localeOffers(set, code), [set, code]);
    const languages = useMemo(() => languageOffers(locales, code), [locales, code]);
    const ofLanguage = locales.filter(({ row }) => languageOf(row) === language?.row);
    const offers = typed === '' ? (language === null ? languages : ofLanguage) : found(locales, typed);
    const left = useRef<string>();
    useLayoutEffect(() => {
        const first = (language === null ? left.current : undefined) ?? middleOf(offers)?.row ?? '';
        left.current = language?.row;
        if (place.current !== null) {
            focusRow(place.current, first);
        }
    }, [language]);
    const leave = () => {
        setLanguage(null);
    };
    return (
        <Panel
            class="panel wide"
            title={language === null ? t('locale.add') : `${t('locale.add')}: ${language.name}`}
            onClose={language === null ? onClose : leave}
        >
            <div
                ref={place}
                onKeyDown={(event) => {
                    if (isTyped(event)) {
                        focusRow(event.currentTarget, 'search');
                    }
                }}
            >
                <Field row="search" label={t('section.search')} text={typed} onEdit={setTyped} />
                <Count of={typed === '' ? null : offers.length} />
                <Tiles
                    tiles={offers}
                    onUse={(offer) => {
                        if (offer.opens) {
                            setLanguage(offer);
                        } else {
                            onChoose(offer.row);
                        }
                    }}
                />
            </div>
        </Panel>
    );
}
