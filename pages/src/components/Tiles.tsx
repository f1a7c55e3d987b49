import type { JSX } from 'preact';

import { Row } from './Row';

interface Tile {
    /** The name of its row in `data-row`. */
    readonly row: string;
    readonly name: string;
    /** Whether it leads to more tiles. */
    readonly opens: boolean;
}

interface Props<Any extends Tile> {
    readonly tiles: readonly Any[];
    readonly onUse: (tile: Any) => void;
}

/** Short choices beside and below each other: a remote control crosses them in two directions. */
export function Tiles<Any extends Tile>({ tiles, onUse }: Props<Any>): JSX.Element {
    return (
        <div class="tiles">
            {tiles.map((tile) => (
                <Row
                    key={tile.row}
                    kind={tile.opens ? 'opens' : 'acts'}
                    row={tile.row}
                    name={tile.name}
                    onUse={() => {
                        onUse(tile);
                    }}
                />
            ))}
        </div>
    );
}
