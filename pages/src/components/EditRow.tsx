import type { JSX } from 'preact';
import { useLayoutEffect, useRef, useState } from 'preact/hooks';

import { nameOfSetting, usePage, wordsFor } from './page';
import { RowStatus } from './RowStatus';

interface Props {
    readonly setting: string;
    readonly about?: string;
    /** The names of the parts of the value, when there are several. */
    readonly parts?: readonly string[];
    readonly split?: (value: string) => readonly string[];
    readonly join?: (parts: readonly string[]) => string;
}

/** A setting that is text. Enter opens an editor in its place; Enter saves, Escape leaves the value as it was. */
export function EditRow(props: Props): JSX.Element {
    const { store, state, language } = usePage();
    const { setting, about } = props;
    const [editing, setEditing] = useState(store.drafts.has(setting));
    /** Whether it was opened here and now; a draft that is found again leaves the focus where it is. */
    const opened = useRef(false);
    const button = useRef<HTMLButtonElement>(null);
    const wasEditing = useRef(false);
    useLayoutEffect(() => {
        if (wasEditing.current && !editing) {
            button.current?.focus();
        }
        wasEditing.current = editing;
    }, [editing]);
    const value = state.values?.[setting];
    const close = () => {
        store.drafts.delete(setting);
        setEditing(false);
    };
    if (editing) {
        return (
            <Editor
                {...props}
                value={value ?? ''}
                takesFocus={opened.current}
                onSave={(to) => {
                    close();
                    void store.set(setting, to);
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
                    setEditing(true);
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

const alone = (value: string): readonly string[] => [value];
const onlyPart = (parts: readonly string[]): string => parts[0] ?? '';

interface EditorProps extends Props {
    readonly value: string;
    readonly takesFocus: boolean;
    readonly onSave: (value: string) => void;
    readonly onCancel: () => void;
}

function Editor(props: EditorProps): JSX.Element {
    const { setting, parts, split = alone, join = onlyPart, value, takesFocus, onSave, onCancel } = props;
    const { store, language } = usePage();
    const name = nameOfSetting(setting, language);
    const kept = store.drafts.get(setting);
    const [draft, setDraft] = useState(() => kept?.parts ?? split(value));
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

    const submit = (event: Event) => {
        event.preventDefault();
        if (changedMeanwhile) {
            keep.current?.focus();
        } else {
            onSave(join(draft));
        }
    };
    const keepMine = () => {
        setKnown(value);
        first.current?.focus();
    };
    const takeNew = () => {
        setDraft(split(value));
        keepMine();
    };
    return (
        <form
            class="editor"
            aria-label={language.t('edit', { name })}
            onSubmit={submit}
            onKeyDown={(event) => {
                if (event.key === 'Escape') {
                    event.preventDefault();
                    onCancel();
                }
            }}
        >
            {draft.map((text, place) => (
                <label key={place} class="field" data-row={place === 0 ? setting : `${setting}-${place}`}>
                    <span class="name">{parts?.[place] === undefined ? name : `${name}: ${parts[place]}`}</span>
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
                <button type="button" class="button" onClick={onCancel}>
                    {language.t('cancel')}
                </button>
            </div>
        </form>
    );
}
