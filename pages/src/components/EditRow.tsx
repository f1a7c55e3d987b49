import type { JSX } from 'preact';
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';

import { defaultOf, isBlank, nameOfSetting, pairOf, usePage, wordsFor } from '../settings/format';
import { RowStatus } from './RowStatus';

interface Props {
    readonly setting: string;
    readonly about?: string;
    /** The names of the two parts of the value, when it is a pair. */
    readonly parts?: readonly string[];
}

/**
 * A setting that is text. Enter opens an editor in its place; Enter saves, Back leaves the value as it was. One editor is open
 * at a time: the text in another is kept until it is opened again.
 */
export function EditRow(props: Props): JSX.Element {
    const { store, state, language } = usePage();
    const { setting, about } = props;
    const editing = state.editor === setting;
    /** Whether it was opened here and now; a draft that is found again leaves the focus where it is. */
    const opened = useRef(false);
    const button = useRef<HTMLButtonElement>(null);
    const wasEditing = useRef(false);
    useLayoutEffect(() => {
        if (wasEditing.current && state.editor === null) {
            button.current?.focus();
        }
        wasEditing.current = editing;
    }, [editing, state.editor]);
    const value = state.values?.[setting];
    const close = () => {
        store.drafts.delete(setting);
        store.closeEditor(setting);
    };
    if (editing) {
        return (
            <Editor
                {...props}
                value={value ?? ''}
                takesFocus={opened.current}
                onSave={(texts) => {
                    close();
                    const isDefault = texts.every(isBlank);
                    void store.set(setting, isDefault ? defaultOf(setting) : joined(texts), isDefault);
                }}
                onUnchanged={() => {
                    close();
                    store.tellUnchanged(setting);
                }}
                onCancel={close}
            />
        );
    }
    const name = nameOfSetting(setting, language);
    return (
        <div class="row" data-row={setting}>
            <button
                ref={button}
                type="button"
                class="control"
                aria-describedby={about === undefined ? undefined : `about-${setting}`}
                onClick={() => {
                    store.forgetStatus(setting);
                    opened.current = true;
                    store.openEditor(setting);
                }}
            >
                <span class="name">{name}</span>
                <bdi class="value">{wordsFor(setting, value, language)}</bdi>
                {about !== undefined && (
                    <span class="about" id={`about-${setting}`} aria-hidden="true">
                        {about}
                    </span>
                )}
            </button>
            <RowStatus setting={setting} />
        </div>
    );
}

/** A value of several texts is the text of a list; one of another form is a single text, kept as it is. */
function joined(texts: readonly string[]): string {
    return texts.length === 1 ? (texts[0] ?? '') : JSON.stringify(texts.map((text) => (isBlank(text) ? '' : text)));
}

interface EditorProps extends Props {
    readonly value: string;
    readonly takesFocus: boolean;
    readonly onSave: (texts: readonly string[]) => void;
    readonly onUnchanged: () => void;
    readonly onCancel: () => void;
}

function Editor(props: EditorProps): JSX.Element {
    const { setting, parts, value, takesFocus, onSave, onUnchanged, onCancel } = props;
    const { store, language } = usePage();
    const name = nameOfSetting(setting, language);
    const kept = store.drafts.get(setting);
    const texts = (parts && pairOf(value)) ?? [value];
    const [draft, setDraft] = useState(() => kept?.parts ?? texts);
    /** The value that the person knows of. */
    const [known, setKnown] = useState(kept?.known ?? value);
    const [isTouched, setIsTouched] = useState(kept !== undefined);
    const first = useRef<HTMLInputElement>(null);
    const keep = useRef<HTMLButtonElement>(null);
    const changedMeanwhile = value !== known;
    useLayoutEffect(() => {
        if (takesFocus) {
            first.current?.focus();
            first.current?.select();
        }
    }, [takesFocus]);
    useLayoutEffect(() => {
        if (isTouched) {
            store.drafts.set(setting, { parts: draft, known });
        }
    }, [store, setting, draft, known, isTouched]);
    useEffect(
        () => () => {
            if (!store.drafts.has(setting)) {
                store.closeEditor(setting);
            }
        },
        [store, setting],
    );

    const submit = (event: Event) => {
        event.preventDefault();
        if (changedMeanwhile) {
            keep.current?.focus();
        } else if (joined(draft) === joined(texts)) {
            onUnchanged();
        } else {
            onSave(draft);
        }
    };
    const keepMine = () => {
        setKnown(value);
        first.current?.focus();
    };
    const takeNew = () => {
        setDraft(texts);
        keepMine();
    };
    return (
        <form
            class="editor"
            aria-label={language.t('edit', { name })}
            onSubmit={submit}
            onReset={(event) => {
                event.preventDefault();
                onCancel();
            }}
        >
            {draft.map((text, place) => (
                <label key={place} class="field" data-row={place === 0 ? setting : `${setting}-${place}`}>
                    <span class="name">
                        {parts === undefined || draft.length === 1 ? name : `${name}: ${parts[place]}`}
                    </span>
                    <input
                        ref={place === 0 ? first : null}
                        type="text"
                        dir="auto"
                        value={text}
                        autocomplete="off"
                        spellcheck={false}
                        onInput={({ currentTarget }) => {
                            setIsTouched(true);
                            setDraft(draft.map((old, other) => (other === place ? currentTarget.value : old)));
                        }}
                    />
                </label>
            ))}
            <div role="alert">
                {changedMeanwhile && (
                    <div class="meanwhile" data-row={`${setting}-meanwhile`}>
                        <p>{language.t('meanwhile', { value: wordsFor(setting, value, language) })}</p>
                        <button type="button" class="button" ref={keep} onClick={keepMine}>
                            {language.t('meanwhile.keep')}
                        </button>
                        <button type="button" class="button" onClick={takeNew}>
                            {language.t('meanwhile.take')}
                        </button>
                    </div>
                )}
            </div>
            <div class="buttons" data-row={`${setting}-buttons`}>
                <button type="submit" class="button primary">
                    {language.t('save')}
                </button>
                <button type="reset" class="button">
                    {language.t('cancel')}
                </button>
            </div>
        </form>
    );
}
