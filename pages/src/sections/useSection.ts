import { useEffect, useState } from 'preact/hooks';

import type { SectionId } from './rows';
import { sections } from './Section';

function sectionFromAddress(): SectionId {
    return sections.find(({ id }) => `#${id}` === location.hash)?.id ?? 'device';
}

/** Keeps the section in the address. Browsers ignore too frequent changes of the history. */
function note(id: SectionId): void {
    if (location.hash !== `#${id}`) {
        history.replaceState(history.state, '', `#${id}`);
    }
}

interface ShownSection {
    /** The one that the menu is at. */
    readonly current: SectionId;
    /** The one in the list, which follows a little later. */
    readonly drawn: SectionId;
    readonly show: (id: SectionId) => void;
    /** Draws it at once. */
    readonly draw: (id: SectionId) => void;
}

/** Which section is shown. */
export function useSection(): ShownSection {
    const [current, show] = useState(sectionFromAddress);
    const [drawn, draw] = useState(current);
    // In a task of its own, after the frame with the focus in the menu: many keys may follow.
    useEffect(() => {
        const timer = setTimeout(() => {
            draw(current);
            note(current);
        });
        return () => {
            clearTimeout(timer);
        };
    }, [current]);
    return { current, drawn, show, draw };
}
