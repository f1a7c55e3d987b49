import { isBack } from '../focus/keys';
import type { Exchange } from './exchanges';

export interface Choice {
    /** Null while the list follows the newest. */
    readonly chosen: Exchange | null;
    readonly showsFrame: boolean;
}

/** What a key of the list changes; null when the list does not use the key, as an arrow that leaves it. */
export function keyAction(
    key: string,
    exchanges: readonly Exchange[],
    { chosen, showsFrame }: Choice,
): Partial<Choice> | null {
    const last = exchanges.length - 1;
    const index = exchanges.findIndex(({ first }) => first.serial === chosen?.first.serial);
    const choose = (place: number) => {
        const exchange = exchanges[place];
        return exchange === undefined ? null : { chosen: exchange };
    };
    if (isBack(key)) {
        return showsFrame ? { showsFrame: false } : chosen === null ? null : { chosen: null };
    }
    switch (key) {
        case 'ArrowUp':
            return choose(index < 0 ? last : index - 1);
        case 'ArrowDown':
            return choose(index < 0 ? last : index + 1);
        case 'Home':
            return choose(0);
        case 'End':
            return choose(last);
        case 'Enter': {
            const shown = exchanges[index < 0 ? last : index];
            return shown === undefined || showsFrame ? null : { chosen: shown, showsFrame: true };
        }
        default:
            return null;
    }
}
