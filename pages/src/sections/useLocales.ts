import { useEffect, useState } from 'preact/hooks';
import type { SettingKey } from 'settings-client';

import { usePage } from '../components/context';
import { languageFor } from '../i18n/language';
import { localesOf } from '../settings/values';
import { carried, pickedUp, type PickedUp } from './locales';
import { useUndo } from './useUndo';

export interface Locales {
    readonly locales: readonly string[];
    readonly pickedUp: PickedUp | null;
    /** A change that waits for an answer, because the pages would change their language with it. */
    readonly question: string | null;
    readonly canUndo: boolean;
    readonly change: (locales: readonly string[]) => void;
    readonly undo: () => void;
    readonly answer: (isYes: boolean) => void;
    readonly pickUp: (index: number) => void;
    readonly carry: (by: 1 | -1) => void;
    readonly drop: () => void;
    readonly putBack: () => void;
}

/** The locales of a setting, and what a person does with them. */
export function useLocales(setting: SettingKey): Locales {
    const { store, state, language } = usePage();
    const value = state.values?.[setting];
    const [question, setQuestion] = useState<string | null>(null);
    const [inHand, setInHand] = useState<PickedUp | null>(null);
    const undo = useUndo(value);
    // What others change meanwhile comes first.
    useEffect(() => {
        setInHand(null);
        setQuestion(null);
    }, [value]);
    const set = (to: string) => {
        undo.offer({ before: value ?? '', after: to });
        void store.set(setting, to);
    };
    const request = (to: string) => {
        setInHand(null);
        if (to !== value) {
            const next = languageFor(localesOf(to)[0]);
            (next.code === language.code ? set : setQuestion)(to);
        }
    };
    const locales = localesOf(value);
    return {
        locales,
        pickedUp: inHand,
        question,
        canUndo: undo.before !== null,
        change: (list) => {
            request(JSON.stringify(list));
        },
        undo: () => {
            request(undo.before ?? value ?? '');
        },
        answer: (isYes) => {
            setQuestion(null);
            if (isYes && question !== null) {
                set(question);
            }
        },
        pickUp: (index) => {
            setInHand(pickedUp(locales, index));
        },
        carry: (by) => {
            setInHand(inHand && carried(inHand, by));
        },
        drop: () => {
            request(inHand === null ? (value ?? '') : JSON.stringify(inHand.locales));
        },
        putBack: () => {
            setInHand(null);
        },
    };
}
