import type { JSX } from 'preact';

import { usePage } from '../components/context';
import type { LetterGroup } from './letters';
import { ZoneOption, type Choice } from './ZoneOption';
import type { Zone } from './zones';

interface Props {
    readonly region: string;
    readonly cities: readonly Zone[];
    readonly letters: readonly LetterGroup[];
    readonly choice: Choice;
    /** Moves the focus to a city. */
    readonly focusAt: (index: number) => void;
}

/** The cities of a region, and beside them the letters with which they begin. */
export function CityStep({ region, cities, letters, choice, focusAt }: Props): JSX.Element {
    const { t } = usePage().language;
    return (
        <div class="cities">
            <div class="scrolled" data-column="cities" role="group" aria-label={region}>
                {cities.map((zone) => (
                    <ZoneOption key={zone.id} zone={zone} choice={choice} />
                ))}
            </div>
            {letters.length > 1 && (
                <div class="letters" data-column="letters" role="group" aria-label={t('timezone.letters')}>
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
            )}
        </div>
    );
}
