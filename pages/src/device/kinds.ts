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

/** Frames without a type are called after the member that only they have. */
const members = [
    'notice',
    'error',
    'command',
    'ok',
    'batch',
    'hello',
    'history',
    'catalogue',
    'page',
    'backup',
    'status',
] as const;

/** The kind of a frame, as its text alone shows it. An answer has the kind of its request. */
export type FrameKind = (typeof kindsByType)[keyof typeof kindsByType] | (typeof members)[number] | 'other';

export const frameKinds: readonly FrameKind[] = [...Object.values(kindsByType), ...members, 'other'];

export function kindOf(frame: Frame): FrameKind {
    const ofType: Readonly<Record<string, FrameKind | undefined>> = kindsByType;
    return ofType[String(frame['type'])] ?? members.find((member) => member in frame) ?? 'other';
}
