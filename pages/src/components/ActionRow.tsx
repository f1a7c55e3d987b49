import type { JSX } from 'preact';

interface Props {
    /** The name of the row in `data-row`. */
    readonly row: string;
    readonly name: string;
    readonly sign?: string;
    /** A destructive action is marked, and no section opens on it. */
    readonly isDestructive?: boolean;
    readonly opensDialog?: boolean;
    readonly onUse: () => void;
}

/** A button as wide as the section. */
export function ActionRow(props: Props): JSX.Element {
    const { row, name, sign, isDestructive = false, opensDialog = false, onUse } = props;
    return (
        <div class="row" data-row={row}>
            <button
                type="button"
                class={isDestructive ? 'control danger' : 'control'}
                data-tool={isDestructive ? row : undefined}
                aria-haspopup={opensDialog ? 'dialog' : undefined}
                onClick={onUse}
            >
                <span class="name">
                    {sign !== undefined && <span aria-hidden="true">{sign} </span>}
                    {name}
                </span>
            </button>
        </div>
    );
}
