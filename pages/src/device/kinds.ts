import { messageType } from 'settings-client';

import type { Frame } from './messages';

const kindsByType = {
    [messageType.getSettings]: 'GetSettings',
    [messageType.isSelected]: 'IsOrliaSelectedVA',
    [messageType.openSettings]: 'OpenVASettings',
    [messageType.logOut]: 'LogOut',
    [messageType.setSettings]: 'SetSettings',
    [messageType.settingChanged]: 'event',
} as const;

/** Frames without a type are called after the member that only they have, except these. */
const kindsByMember = { error: 'refusal', ok: 'reply', device: 'reply' } as const;
const members = ['notice', 'command', 'batch', 'hello', 'history', 'catalogue', 'page', 'backup', 'status'] as const;

/** The kind of a frame, as its text alone shows it. An answer has the kind of its request. */
export type FrameKind =
    | (typeof kindsByType)[keyof typeof kindsByType]
    | (typeof kindsByMember)[keyof typeof kindsByMember]
    | (typeof members)[number]
    | 'other';

export const frameKinds: readonly FrameKind[] = [
    ...Object.values(kindsByType),
    ...members,
    'refusal',
    'reply',
    'other',
];

export function kindOf(frame: Frame): FrameKind {
    const ofType: Readonly<Record<string, FrameKind | undefined>> = kindsByType;
    const ofMember: Readonly<Record<string, FrameKind | undefined>> = kindsByMember;
    const type = frame['type'];
    if (typeof type === 'number') {
        return ofType[type] ?? 'other';
    }
    const kinds = Object.keys(frame).map((member) => ofMember[member] ?? members.find((known) => known === member));
    return kinds.find((kind) => kind !== undefined) ?? 'other';
}
