import type { JSX } from 'preact';

import type { FieldEntry } from './commands';

/** A text with its label, and values that are offered while typing. */
export function Field({ label, hint, choices }: FieldEntry): JSX.Element {
    const list = choices && label.replaceAll(' ', '-');
    return (
        <label>
            <span>{label}</span>
            <input type="text" placeholder={hint} list={list} autocomplete="off" spellcheck={false} />
            {choices && (
                <datalist id={list}>
                    {choices.map((choice) => (
                        <option key={choice} value={choice} />
                    ))}
                </datalist>
            )}
        </label>
    );
}
