import { useLayoutEffect, useState } from 'preact/hooks';

import { RemoteControl, type Writing, type Zones } from './RemoteControl';

/** Makes the page usable with a remote control. Returns: a function that moves the focus into the list. */
export function useRemoteControl(zones: Zones, section: string, writing: Writing): () => void {
    const [control] = useState(() => new RemoteControl(zones));
    useLayoutEffect(() => control.start(), [control]);
    // Not `useEffect`, which runs after the next frame: a fast key would find the previous section.
    useLayoutEffect(() => {
        control.update(section, writing);
        control.recoverFocus();
    });
    return () => {
        control.enterList();
    };
}
