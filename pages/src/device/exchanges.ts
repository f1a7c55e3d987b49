import type { LogView, Message } from './messageLog';
import { connectionOf } from './messages';

/** A request with its answers, or a frame that stands alone. */
export interface Exchange {
    readonly first: Message;
    readonly answers: readonly Message[];
    /** What is shown in place of answers. */
    readonly missing: '' | 'no answer yet' | 'no answer came' | 'asks for no answer';
}

interface Pending {
    readonly first: Message;
    readonly answers: Message[];
    state: 'open' | 'whole' | 'passed';
}

/** How long an answer may take, in milliseconds, before it is said that it did not come. */
export const answerTime = 5_000;

/** A refusal and a reply of the device name no request: they answer the oldest one. */
function isAnswer(message: Message, request: Message): boolean {
    return (
        message.kind === 'error' ||
        message.listener === 'device' ||
        message.ids.some((id) => id !== undefined && request.ids.includes(id))
    );
}

/** Whether the last answer completes them; a refusal of a whole batch has no index. */
function isWhole({ first, answers }: Pending, last: Message): boolean {
    return answers.length >= first.asks || (last.kind === 'error' && !last.text.includes('"index":'));
}

/** Adds an answer to its request. The host answers in order, so requests before it get none. Returns: false without a request. */
function answer(waiting: Pending[], message: Message): boolean {
    const index = waiting.findIndex(({ first }) => isAnswer(message, first));
    const found = waiting[index];
    if (found === undefined) {
        return false;
    }
    found.answers.push(message);
    for (const passed of waiting.splice(0, index)) {
        passed.state = 'passed';
    }
    if (isWhole(found, message)) {
        found.state = 'whole';
        waiting.shift();
    }
    return true;
}

/** The messages with answers put to their requests, paired by connection and messageId. */
export function exchangesOf({
    messages,
    time,
    link,
}: Pick<LogView, 'messages' | 'time' | 'link'>): readonly Exchange[] {
    const exchanges: Pending[] = [];
    const requests = new Map<string, Pending[]>();
    for (const message of messages) {
        const connection = `${message.link} ${connectionOf(message)}`;
        const waiting = requests.get(connection) ?? [];
        if (message.direction === 'out' && answer(waiting, message)) {
            continue;
        }
        const exchange: Pending = { first: message, answers: [], state: message.asks > 0 ? 'open' : 'whole' };
        exchanges.push(exchange);
        if (exchange.state === 'open') {
            waiting.push(exchange);
            requests.set(connection, waiting);
        }
    }
    return exchanges.map(({ first, answers, state }) => {
        const isLost = state === 'passed' || first.link !== link || time - first.arrived >= answerTime;
        const isSilent = first.direction === 'in' && first.asks === 0;
        const missing = isLost ? 'no answer came' : 'no answer yet';
        return { first, answers, missing: isSilent ? 'asks for no answer' : state === 'whole' ? '' : missing };
    });
}

/** Their messages, in the order in which they came. */
export function messagesOf(exchanges: readonly Exchange[]): readonly Message[] {
    return exchanges
        .flatMap(({ first, answers }) => [first, ...answers])
        .sort((one, other) => one.serial - other.serial);
}
