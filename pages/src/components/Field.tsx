import type { JSX, RefObject } from 'preact';

interface FieldProps {
    readonly input?: RefObject<HTMLInputElement> | null;
    /** The name of the row in `data-row`. */
    readonly row: string;
    readonly label: string;
    readonly text: string;
    readonly onEdit: (text: string) => void;
}

/** A text field with its label. */
export function Field({ input = null, row, label, text, onEdit }: FieldProps): JSX.Element {
    return (
        <label class="field" data-row={row}>
            <span class="name">{label}</span>
            <input
                ref={input}
                type="text"
                dir="auto"
                value={text}
                autocomplete="off"
                spellcheck={false}
                onInput={({ currentTarget }) => {
                    onEdit(currentTarget.value);
                }}
            />
        </label>
    );
}
