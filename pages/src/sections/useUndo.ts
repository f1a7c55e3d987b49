import { useEffect, useState } from 'preact/hooks';

/** How long a change can be undone, in milliseconds. */
const undoDuration = 10_000;

interface Change {
    readonly before: string;
    readonly after: string;
}

function hasFocus(): boolean {
    return document.activeElement?.matches('[data-tool="undo"]') === true;
}

export interface Undo {
    /** The value before the last change; null when that can no longer be undone. */
    readonly before: string | null;
    readonly offer: (change: Change) => void;
}

/** Whether the last change of a value can be undone: for a while, as long as nobody changed it since. */
export function useUndo(value: string | undefined): Undo {
    const [change, offer] = useState<Change | null>(null);
    useEffect(() => {
        if (change === null) {
            return undefined;
        }
        let timer: ReturnType<typeof setTimeout>;
        const end = () => {
            // Nobody loses the button under the finger.
            if (hasFocus()) {
                timer = setTimeout(end, undoDuration);
            } else {
                offer(null);
            }
        };
        timer = setTimeout(end, undoDuration);
        return () => {
            clearTimeout(timer);
        };
    }, [change]);
    return { before: change !== null && change.after === value ? change.before : null, offer };
}
