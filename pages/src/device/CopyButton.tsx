import type { JSX } from 'preact';

import type { DeviceStore } from './store';

interface Props {
    readonly label: string;
    /** What is said to be copied. */
    readonly what: string;
    readonly text: () => string;
    readonly store: DeviceStore;
    readonly disabled?: boolean;
}

export function CopyButton({ label, what, text, store, disabled = false }: Props): JSX.Element {
    const copy = async () => {
        try {
            await navigator.clipboard.writeText(text());
            store.show({ copied: `Copied ${what}.` });
        } catch {
            store.show({ copied: 'The browser did not allow copying.' });
        }
    };
    return (
        <button type="button" disabled={disabled} onClick={() => void copy()}>
            {label}
        </button>
    );
}
