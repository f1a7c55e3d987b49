import { useLayoutEffect, useState } from 'preact/hooks';

import { RemoteControl, type Writing, type Zones } from './RemoteControl';

interface Moves {
    /** Moves the focus into the list. */
    readonly enterList: () => void;
    /** Moves it to a row of a section, which may not be drawn yet. */
    readonly enterAt: (section: string, row: string) => void;
}

/** Makes the page usable with a remote control. */
export function useRemoteControl(zones: Zones, section: string, writing: Writing): Moves {
    const [control] = useState(() => new RemoteControl(zones));
    useLayoutEffect(() => control.start(), [control]);
    // Not `useEffect`, which runs after the next frame: a fast key would find the previous section.
    useLayoutEffect(() => {
        control.update(section, writing);
        control.recoverFocus();
    });
    return {
        enterList: () => {
            control.enterList();
        },
        enterAt: (place, row) => {
            control.enterAt(place, row);
        },
    };
}
