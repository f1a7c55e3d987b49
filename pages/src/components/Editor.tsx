import type { JSX, RefObject } from 'preact';
import { useEffect, useLayoutEffect, useRef } from 'preact/hooks';

import type { SettingKey } from '../settings/catalogue';
import { nameOfSetting, wordsFor } from '../settings/format';
import { usePage } from './context';
import { Field } from './Field';
import type { RowProps } from './RowProps';
import { useEditedTexts } from './useEditedTexts';

interface Props extends RowProps {
    readonly takesFocus: boolean;
    readonly onSave: (texts: readonly string[]) => void;
    readonly onUnchanged: () => void;
    readonly onCancel: () => void;
}

export function Editor({ setting, parts, takesFocus, onSave, onUnchanged, onCancel }: Props): JSX.Element {
    const { store, language } = usePage();
    const name = nameOfSetting(setting, language);
    const { texts, edit, isConflict, isUnchanged, keepTexts, useValue } = useEditedTexts(setting, parts);
    const first = useRef<HTMLInputElement>(null);
    const keep = useRef<HTMLButtonElement>(null);
    useLayoutEffect(() => {
        if (takesFocus) {
            first.current?.focus();
            first.current?.select();
        }
    }, [takesFocus]);
    useEffect(
        () => () => {
            if (!store.drafts.has(setting)) {
                store.closeEditor(setting);
            }
        },
        [store, setting],
    );
    const submit = () => {
        if (isConflict) {
            keep.current?.focus();
        } else if (isUnchanged) {
            onUnchanged();
        } else {
            onSave(texts);
        }
    };
    const resolve = (how: () => void) => () => {
        how();
        first.current?.focus();
    };
    return (
        <form
            class="editor"
            aria-label={language.t('edit', { name })}
            onSubmit={(event) => {
                event.preventDefault();
                submit();
            }}
            onReset={(event) => {
                event.preventDefault();
                onCancel();
            }}
        >
            {texts.map((text, index) => (
                <Field
                    key={index}
                    input={index === 0 ? first : null}
                    row={index === 0 ? setting : `${setting}-${index}`}
                    label={parts === undefined || texts.length === 1 ? name : `${name}: ${parts[index]}`}
                    text={text}
                    onEdit={(edited) => {
                        edit(index, edited);
                    }}
                />
            ))}
            <div role="alert">
                {isConflict && (
                    <Conflict setting={setting} keep={keep} onKeep={resolve(keepTexts)} onUse={resolve(useValue)} />
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

interface ConflictProps {
    readonly setting: SettingKey;
    readonly keep: RefObject<HTMLButtonElement>;
    readonly onKeep: () => void;
    readonly onUse: () => void;
}

/** Shows the value that was set during the edit, and lets the person decide. */
function Conflict({ setting, keep, onKeep, onUse }: ConflictProps): JSX.Element {
    const { state, language } = usePage();
    return (
        <div class="conflict" data-row={`${setting}-conflict`}>
            <p>{language.t('conflict', { value: wordsFor(setting, state.values?.[setting] ?? '', language) })}</p>
            <button type="button" class="button" ref={keep} onClick={onKeep}>
                {language.t('conflict.keep')}
            </button>
            <button type="button" class="button" onClick={onUse}>
                {language.t('conflict.use')}
            </button>
        </div>
    );
}
