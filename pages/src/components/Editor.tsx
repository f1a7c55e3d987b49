import type { JSX, RefObject } from 'preact';
import { useLayoutEffect, useRef } from 'preact/hooks';

import { nameOfSetting } from '../settings/format';
import { Conflict } from './Conflict';
import { usePage } from './context';
import { Explanation } from './Explanation';
import { Buttons, Fields } from './Fields';
import type { RowProps } from './RowProps';
import { useEditedTexts } from './useEditedTexts';

interface Props extends RowProps {
    readonly takesFocus: boolean;
    readonly onSave: (texts: readonly string[]) => void;
    readonly onUnchanged: () => void;
    readonly onCancel: () => void;
}

/** The form in place of a row: its fields, a choice after a conflict, and buttons. */
export function Editor({ setting, about, parts, takesFocus, onSave, onUnchanged, onCancel }: Props): JSX.Element {
    const { language } = usePage();
    const { texts, edit, isConflict, isUnchanged, keepTexts, useValue } = useEditedTexts(setting, parts);
    const first = useFirstField(takesFocus);
    const keep = useRef<HTMLButtonElement>(null);
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
    const name = nameOfSetting(setting, language);
    return (
        <form
            class="editor"
            aria-label={language.t('edit.title', { name })}
            onSubmit={insteadOfDefault(submit)}
            onReset={insteadOfDefault(onCancel)}
        >
            <Fields setting={setting} parts={parts} texts={texts} first={first} onEdit={edit} />
            <div role="alert">
                {isConflict && (
                    <Conflict setting={setting} keep={keep} onKeep={resolve(keepTexts)} onUse={resolve(useValue)} />
                )}
            </div>
            <Buttons setting={setting} />
            <div class="explanation" aria-hidden="true">
                <h3>{name}</h3>
                <div>
                    <Explanation setting={setting} about={about} />
                </div>
            </div>
        </form>
    );
}

/** The first field. It gets the focus, with its text selected, when `takesFocus`. */
function useFirstField(takesFocus: boolean): RefObject<HTMLInputElement> {
    const first = useRef<HTMLInputElement>(null);
    useLayoutEffect(() => {
        if (takesFocus) {
            first.current?.focus();
            first.current?.select();
        }
    }, [takesFocus]);
    return first;
}

function insteadOfDefault(action: () => void): (event: Event) => void {
    return (event) => {
        event.preventDefault();
        action();
    };
}
