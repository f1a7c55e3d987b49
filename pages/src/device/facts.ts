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

const inBatch: readonly FrameKind[] = ['GetSettings', 'IsOrliaSelectedVA', 'SetSettings'];

/** How many answers the host will send; a frame that it does not understand gets a refusal. */
function asksOf(frame: Frame): number {
    const { messageId, payload, answer } = frame;
    switch (kindOf(frame)) {
        case 'GetSettings':
            return messageId !== undefined && payload !== undefined ? 1 : 0;
        case 'IsOrliaSelectedVA':
            return messageId !== undefined ? 1 : 0;
        case 'OpenVASettings':
        case 'LogOut':
        case 'SetSettings':
            return answer === true ? 1 : 0;
        case 'batch': {
            const asks = listOf(frame, 'batch').map((item) =>
                isRecord(item) && inBatch.includes(kindOf(item)) ? asksOf(item) : null,
            );
            // Of a refused batch there is one.
            return asks.length === 0 || asks.includes(null)
                ? 1
                : asks.reduce<number>((sum, count) => sum + (count ?? 0), 0);
        }
        default:
            return 1;
    }
}

export function factsOf({ text, direction, listener }: Pick<Trace, 'text' | 'direction' | 'listener'>): Facts {
    const frame = parseObject(text) ?? {};
    const kind = kindOf(frame);
    const isRequest = direction === 'in';
    const name = part(frame, 'hello')['client'] ?? (kind === 'event' || listener === 'socket' ? frame['client'] : null);
    return {
        kind,
        words: summary(kind === 'other' ? text : wordsOf(frame, direction)),
        ids:
            kind === 'event'
                ? []
                : [frame, ...listOf(frame, 'batch').filter(isRecord)].map(({ messageId }) => messageId),
        asks: isRequest ? asksOf(frame) : 0,
        refused: kind === 'refusal' || part(frame, 'payload')['outcome'] === 'refused',
        name: typeof name === 'string' ? name : null,
    };
}
