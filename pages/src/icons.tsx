import type { JSX } from 'preact';

/** Drawn for these pages: lines of two units in a square of 24. */
const paths = {
    // Sections
    device: 'M3 5h18v12H3zM8 21h8',
    language: 'M12 3a9 9 0 1 0 0 18a9 9 0 1 0 0-18zM3 12h18M12 3c-5 5-5 13 0 18M12 3c5 5 5 13 0 18',
    captions: 'M3 5h18v14H3zM6 12h5M14 12h4M6 15.5h3M12 15.5h6',
    voice: 'M12 3a3 3 0 0 0-3 3v5a3 3 0 0 0 6 0V6a3 3 0 0 0-3-3zM5.5 11a6.5 6.5 0 0 0 13 0M12 17.5V21',
    account: 'M12 4a4 4 0 1 0 0 8a4 4 0 1 0 0-8zM4 21c0-4 3.5-6 8-6s8 2 8 6',
    search: 'M10.5 4a6.5 6.5 0 1 0 0 13a6.5 6.5 0 1 0 0-13zM15.5 15.5L21 21',
    changes: 'M4 12a8 8 0 1 0 2.5-5.8L4 8.5M4 4v4.5h4.5M12 8v4.5l3 2',
    about: 'M12 3a9 9 0 1 0 0 18a9 9 0 1 0 0-18zM12 11v6M12 7.200v.1',
    // Rows
    opens: 'M9 5l7 7l-7 7',
    edit: 'M4 20l1-4L16 5l3 3L8 19zM13.5 7.5l3 3',
    add: 'M12 5v14M5 12h14',
    remove: 'M6 6l12 12M18 6L6 18',
    up: 'M6 15l6-6l6 6',
    down: 'M6 9l6 6l6-6',
    move: 'M12 3v18M8 7l4-4l4 4M8 17l4 4l4-4',
    undo: 'M9 5L4 10l5 5M4 10h10a5 5 0 0 1 0 10h-4',
    external: 'M13 4h7v7M20 4L11 13M17 14v6H4V7h6',
    exit: 'M10 4H4v16h6M9 12h12M17 8l4 4l-4 4',
    // States
    done: 'M5 12.5l4.5 4.5L19 7',
    same: 'M6 9.5h12M6 14.5h12',
    failed: 'M12 3a9 9 0 1 0 0 18a9 9 0 1 0 0-18zM12 7v6M12 16.8v.1',
    waiting: 'M5.5 12v.1M12 12v.1M18.5 12v.1',
    chosen: 'M12 3a9 9 0 1 0 0 18a9 9 0 1 0 0-18zM12 9a3 3 0 1 0 0 6a3 3 0 1 0 0-6zM12 11a1 1 0 1 0 0 2a1 1 0 1 0 0-2z',
    open: 'M12 3a9 9 0 1 0 0 18a9 9 0 1 0 0-18z',
} as const;

export type IconName = keyof typeof paths;
export const iconNames = Object.keys(paths) as readonly IconName[];

interface Props {
    readonly name: IconName;
    readonly class?: string;
}

/** A sign beside words that say the same. */
export function Icon({ name, class: more = '' }: Props): JSX.Element {
    return (
        <svg class={`icon ${more}`} viewBox="0 0 24 24" aria-hidden="true" data-icon={name}>
            <path d={paths[name]} />
        </svg>
    );
}
