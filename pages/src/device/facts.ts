import { summary } from './format';
import { kindOf, type FrameKind } from './kinds';
import { isRecord, parseObject, type Frame, type Trace } from './messages';
import { listOf, part, wordsOf } from './words';

/** What is read from a frame once, when it comes. */
export interface Facts {
    readonly kind: FrameKind;
    readonly words: string;
    /** The messageIds of a request, also in a batch, or of an answer. */
    readonly ids: readonly unknown[];
    /** How many answers a request asks for. */
    readonly asks: number;
    /** Whether it is an answer that refuses. */
    readonly refused: boolean;
    /** The name of the client that it gives. */
    readonly name: string | null;
}

const mayBeSilent: readonly FrameKind[] = ['OpenVASettings', 'LogOut', 'SetSettings'];

/** How many answers the host will send; also what it does not understand gets one, a refusal. */
function asksOf(frame: Frame): number {
    const kind = kindOf(frame);
    return kind === 'batch'
        ? requestsOf(frame).reduce((sum, request) => sum + asksOf(request), 0)
        : mayBeSilent.includes(kind) && frame['answer'] !== true
          ? 0
          : 1;
}

function requestsOf(batch: Frame): readonly Frame[] {
    return listOf(batch, 'batch').filter(isRecord);
}

export function factsOf({ text, direction, listener }: Pick<Trace, 'text' | 'direction' | 'listener'>): Facts {
    const frame = parseObject(text) ?? {};
    const kind = kindOf(frame);
    const isRequest = direction === 'in';
    const name = part(frame, 'hello')['client'] ?? (kind === 'event' || listener === 'socket' ? frame['client'] : null);
    return {
        kind,
        words: summary(kind === 'other' ? text : wordsOf(frame, direction)),
        ids: kind === 'event' ? [] : [frame, ...requestsOf(frame)].map(({ messageId }) => messageId),
        asks: isRequest ? asksOf(frame) : 0,
        refused: kind === 'error' || part(frame, 'payload')['outcome'] === 'refused',
        name: typeof name === 'string' ? name : null,
    };
}
