import { useLayoutEffect, useState } from 'preact/hooks';

import type { SectionId } from '../sections/rows';
import { RemoteControl, type Sections, type Writing, type Zones } from './RemoteControl';

/** Makes the page usable with a remote control. `draw`: draws a section at once. */
export function useRemoteControl(
    zones: Zones,
    sections: Sections,
    writing: Writing,
    draw: (section: SectionId) => void,
): RemoteControl {
    const [control] = useState(() => new RemoteControl(zones, sections.drawn, draw));
    useLayoutEffect(() => control.start(), [control]);
    // Not `useEffect`, which runs after the next frame: a fast key would find the previous section.
    useLayoutEffect(() => {
        control.update(sections, writing);
        control.recoverFocus();
    });
    return control;
}
