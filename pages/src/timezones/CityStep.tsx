import type { JSX } from 'preact';

import { ZoneOption, type Choice } from './ZoneOption';
import type { Region } from './zones';

interface Props {
    readonly region: Region;
    readonly choice: Choice;
    /** Moves the focus to a city. */
    readonly focusAt: (index: number) => void;
}

/** The cities of a region, and beside them the letters with which they begin. */
export function CityStep({ region: { name, zones, letters }, choice, focusAt }: Props): JSX.Element {
    return (
        <div class="cities">
            <div data-column="cities" role="group" aria-label={name}>
                {zones.map((zone) => (
                    <ZoneOption key={zone.id} zone={zone} choice={choice} />
                ))}
            </div>
            <div class="letters" data-column="letters">
                {letters.map(({ label, start }) => (
                    <button
                        key={label}
                        type="button"
                        class="letter"
                        data-row={`letter ${label}`}
                        onClick={() => {
                            focusAt(start);
                        }}
                    >
                        {label}
                    </button>
                ))}
            </div>
        </div>
    );
}
