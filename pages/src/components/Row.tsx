import type { ComponentChildren, JSX, Ref } from 'preact';

import { Icon, type IconName } from '../icons';

/** What Enter does: opens a panel or an editor, switches, explains what is only shown, or acts at once. */
export type RowKind = 'opens' | 'switches' | 'shows' | 'acts';

interface Props {
    /** The name of the row in `data-row`. */
    readonly row: string;
    readonly kind: RowKind;
    readonly name: string;
    readonly value?: ComponentChildren;
    readonly icon?: IconName | undefined;
    /** Of a row that switches. */
    readonly isOn?: boolean;
    /** A destructive action is marked, and no section opens on it. */
    readonly isDestructive?: boolean;
    readonly opensDialog?: boolean;
    readonly button?: Ref<HTMLButtonElement>;
    /** Buttons at the end of the row, each with `data-tool`; Right leads to them. */
    readonly tools?: ComponentChildren;
    /** Shown beside the list while the row has the focus; on a narrow screen always, in the row. */
    readonly explanation?: ComponentChildren;
    /** What is drawn below the control: status, panels. */
    readonly children?: ComponentChildren;
    readonly onUse: () => void;
}

/** A row of a list. All rows but fields are made of it. */
export function Row(props: Props): JSX.Element {
    const { row, kind, name, value, icon, isOn, isDestructive, opensDialog, button, explanation, tools, children } =
        props;
    const id = `about-${row}`;
    const isSwitch = kind === 'switches';
    return (
        <div class="row" data-row={row} data-kind={kind}>
            <button
                ref={button ?? null}
                type="button"
                class={isDestructive === true ? 'control danger' : 'control'}
                role={isSwitch ? 'switch' : undefined}
                aria-checked={isSwitch ? isOn : undefined}
                aria-label={isSwitch ? name : undefined}
                aria-describedby={explanation === undefined ? undefined : id}
                aria-haspopup={opensDialog === true ? 'dialog' : undefined}
                data-tool={isDestructive === true ? row : undefined}
                onClick={props.onUse}
            >
                {icon !== undefined && <Icon name={icon} />}
                <span class="name">{name}</span> {value !== undefined && <bdi class="value">{value}</bdi>}
                {isSwitch && <span class="mark switch" aria-hidden="true" />}
                {kind === 'opens' && <Icon name="opens" class="mark" />}
            </button>
            {tools !== undefined && <div class="tools">{tools}</div>}
            {explanation !== undefined && (
                <div class="explanation" aria-hidden="true">
                    <h3>{name}</h3>
                    <div id={id}>{explanation}</div>
                </div>
            )}
            {children}
        </div>
    );
}
