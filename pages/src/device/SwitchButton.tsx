import type { JSX } from 'preact';

interface Props {
    readonly label: string;
    readonly checked: boolean;
    readonly onClick?: () => void;
}

/** A switch that shows its label and its state. Without `onClick` it submits its form. */
export function SwitchButton({ label, checked, onClick }: Props): JSX.Element {
    return (
        <button type={onClick ? 'button' : 'submit'} role="switch" aria-checked={checked} onClick={onClick}>
            {label} <span aria-hidden="true">{checked ? 'on' : 'off'}</span>
        </button>
    );
}
