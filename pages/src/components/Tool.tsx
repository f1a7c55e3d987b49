import type { JSX } from 'preact';

import { Icon } from '../icons';

interface Props {
    readonly tool: 'reset' | 'undo';
    readonly words: string;
    readonly onUse: () => void;
}

/** Takes a value back: a button at the end of a row. */
export function Tool({ tool, words, onUse }: Props): JSX.Element {
    return (
        <button type="button" class="tool back" data-tool={tool} onClick={onUse}>
            <Icon name="undo" />
            {words}
        </button>
    );
}
