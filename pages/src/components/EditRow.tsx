import type { JSX, RefObject } from 'preact';
import { useLayoutEffect, useRef } from 'preact/hooks';

import { defaultOf } from '../settings/catalogue';
import { isBlank, nameOfSetting, wordsFor } from '../settings/format';
import { usePage } from './context';
import { Editor } from './Editor';
import { Explanation } from './Explanation';
import { ResetTool } from './ResetTool';
import { Row } from './Row';
import type { RowProps } from './RowProps';
import { RowStatus } from './RowStatus';
import { joined } from './useEditedTexts';

/**
 * A setting that is text. Enter opens an editor in its place; Enter saves, Back leaves the value unchanged. One editor is
 * open at a time: the text in another is kept until that is opened again.
 */
export function EditRow(props: RowProps): JSX.Element {
    const { store, state } = usePage();
    const { setting } = props;
    const isEditing = state.editor === setting;
    /** Whether this row opened the editor; an editor that is found open does not take the focus. */
    const isOpener = useRef(false);
    const button = useRef<HTMLButtonElement>(null);
    const wasEditing = useRef(false);
    useLayoutEffect(() => {
        if (wasEditing.current && state.editor === null) {
            button.current?.focus();
        }
        wasEditing.current = isEditing;
    }, [isEditing, state.editor]);
    const open = () => {
        store.clearStatus(setting);
        isOpener.current = true;
        store.openEditor(setting);
    };
    const close = () => {
        store.drafts.delete(setting);
        store.closeEditor(setting);
    };
    const save = (texts: readonly string[]) => {
        close();
        const isDefault = texts.every(isBlank);
        void store.set(setting, isDefault ? defaultOf(setting) : joined(texts), isDefault);
    };
    const keep = () => {
        close();
        store.markUnchanged(setting);
    };
    return isEditing ? (
        <Editor {...props} takesFocus={isOpener.current} onSave={save} onUnchanged={keep} onCancel={close} />
    ) : (
        <ValueButton {...props} button={button} onUse={open} />
    );
}

interface ButtonProps extends RowProps {
    readonly button: RefObject<HTMLButtonElement>;
    readonly onUse: () => void;
}

function ValueButton({ button, onUse, ...props }: ButtonProps): JSX.Element {
    const { state, language } = usePage();
    const { setting } = props;
    return (
        <Row
            kind="opens"
            row={setting}
            name={nameOfSetting(setting, language)}
            value={wordsFor(setting, state.values?.[setting], language)}
            button={button}
            tools={<ResetTool setting={setting} />}
            explanation={<Explanation {...props} />}
            onUse={onUse}
        >
            <RowStatus setting={setting} />
        </Row>
    );
}
