import type { JSX } from 'preact';

import type { Exchange } from './exchanges';
import { clientOf } from './filter';
import { timeOfDay, visible } from './format';

interface Props {
    readonly exchange: Exchange;
    readonly selected: boolean;
    readonly onClick: () => void;
}

/** What a client asked and what it was told, side by side; an event or a notice takes the whole line. */
export function MessageLine({ exchange, selected, onClick }: Props): JSX.Element {
    const { first, answers, missing } = exchange;
    const results = [...answers.map(({ words }) => words), ...(missing === '' ? [] : [missing])];
    const isRefused = [first, ...answers].some(({ refused }) => refused) || missing === 'no answer came';
    return (
        <li id={lineId(exchange)} role="option" aria-selected={selected} data-refused={isRefused} onClick={onClick}>
            <span>{timeOfDay(first.timestamp)}</span>
            <span>{visible(clientOf(first))}</span>
            <span>{first.words}</span>
            {results.length > 0 && <span>{results.join('; ')}</span>}
        </li>
    );
}

export function lineId({ first }: Exchange): string {
    return `message-${first.serial}`;
}
