import type { ComponentChildren, JSX } from 'preact';

import type { IconName } from '../icons';
import { Row } from './Row';

interface Props {
    /** The name of the row in `data-row`. */
    readonly row: string;
    readonly name: string;
    readonly icon?: IconName;
    readonly isDestructive?: boolean;
    readonly opensDialog?: boolean;
    readonly explanation?: ComponentChildren;
    readonly onUse: () => void;
}

/** A row that does something at once, or asks first. */
export function ActionRow(props: Props): JSX.Element {
    return <Row kind="acts" {...props} />;
}
