import type { Exchange } from './exchanges';
import { frameKinds, type FrameKind } from './kinds';
import type { Message } from './messageLog';
import { connectionOf } from './messages';

/** Which messages to show; an empty text and null match everything. */
export interface Filter {
    readonly text: string;
    readonly setting: string | null;
    readonly type: FrameKind | null;
    /** A listener, the name of a client, or the connection of one without a name. */
    readonly client: string | null;
}

/** The listeners that a filter knows; a frame to all went to the clients of the socket and to the pages. */
export const groups: readonly string[] = ['socket', 'page', 'device'];

/** The filter in the fragment of an address. */
export function filterOf(fragment: string): Filter {
    const parts = new URLSearchParams(fragment.slice(1));
    return {
        text: parts.get('text') ?? '',
        setting: parts.get('setting'),
        type: frameKinds.find((kind) => kind === parts.get('type')) ?? null,
        client: parts.get('client'),
    };
}

/** The fragment of an address that keeps the filter; empty for one that matches everything. */
export function fragmentOf(filter: Filter): string {
    const parts = Object.entries(filter).filter((part): part is [string, string] => Boolean(part[1]));
    return parts.length === 0 ? '' : `#${new URLSearchParams(parts).toString()}`;
}

/** Its name, or its connection; of an event who caused it. */
export function clientOf(message: Message): string {
    return message.name ?? connectionOf(message);
}

function isOf({ listener, ...message }: Message, client: string): boolean {
    return (
        clientOf({ listener, ...message }) === client ||
        listener === client ||
        (listener === 'all' && client !== 'device' && groups.includes(client))
    );
}

/** The exchanges with a message that matches; the text ignores case. */
export function filterExchanges(exchanges: readonly Exchange[], filter: Filter): readonly Exchange[] {
    const { setting, type, client } = filter;
    const text = filter.text.toLowerCase();
    const matches = (message: Message) =>
        (setting === null || message.text.includes(JSON.stringify(setting))) &&
        (type ?? message.kind) === message.kind &&
        (client === null || isOf(message, client)) &&
        (text === '' || `${message.words}\n${message.text}`.toLowerCase().includes(text));
    return exchanges.filter(({ first, answers }) => matches(first) || answers.some(matches));
}
