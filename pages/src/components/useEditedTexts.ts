import { useEffect, useLayoutEffect, useState } from 'preact/hooks';
import type { SettingKey } from 'settings-client';

import { isBlank } from '../settings/format';
import { pairOf } from '../settings/values';
import { usePage } from './context';

/** The value of one text, or of the two texts of a pair. */
export function joined(texts: readonly string[]): string {
    return texts.length === 1 ? (texts[0] ?? '') : JSON.stringify(texts.map((text) => (isBlank(text) ? '' : text)));
}

interface EditedTexts {
    readonly texts: readonly string[];
    readonly edit: (index: number, text: string) => void;
    /** Whether the value is no longer the one that the person edited. */
    readonly isConflict: boolean;
    readonly isUnchanged: boolean;
    /** Ends a conflict: keeps the texts, or replaces them by the new value. */
    readonly keepTexts: () => void;
    readonly useValue: () => void;
}

/** The texts in an editor. They survive the editor as a draft in the store, until they are saved or discarded. */
export function useEditedTexts(setting: SettingKey, parts: readonly string[] | undefined): EditedTexts {
    const { store, state } = usePage();
    const value = state.values?.[setting] ?? '';
    const draft = store.drafts.get(setting);
    const valueTexts = (parts && pairOf(value)) ?? [value];
    const [texts, setTexts] = useState(() => draft?.parts ?? valueTexts);
    /** The value that the person has seen. */
    const [known, setKnown] = useState(draft?.known ?? value);
    const [isTouched, setIsTouched] = useState(draft !== undefined);
    useLayoutEffect(() => {
        if (isTouched) {
            store.drafts.set(setting, { parts: texts, known });
        }
    }, [store, setting, texts, known, isTouched]);
    useEffect(
        () => () => {
            if (!store.drafts.has(setting)) {
                store.closeEditor(setting);
            }
        },
        [store, setting],
    );
    return {
        texts,
        edit: (edited, text) => {
            setIsTouched(true);
            setTexts(texts.map((old, index) => (index === edited ? text : old)));
        },
        isConflict: value !== known,
        isUnchanged: joined(texts) === joined(valueTexts),
        keepTexts: () => {
            setKnown(value);
        },
        useValue: () => {
            setTexts(valueTexts);
            setKnown(value);
        },
    };
}
