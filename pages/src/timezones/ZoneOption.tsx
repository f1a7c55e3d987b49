import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Icon } from '../icons';
import { nameOfTerritory } from './names';
import { useLocalTime } from './times';
import { isNamed, type Zone } from './zones';

export interface Choice {
    /** The identifier that the TV reports. */
    readonly value: string | undefined;
    /** The beginning of the present minute. */
    readonly now: number;
    readonly onChoose: (zone: Zone) => void;
    /** Closes the panel without a change. */
    readonly onKeep: () => void;
}

/** A city with its country and its local time. The zone that the TV has is ticked. */
export function ZoneOption({ zone, choice }: { readonly zone: Zone; readonly choice: Choice }): JSX.Element {
    const { code } = usePage().language;
    const { value, now, onChoose } = choice;
    const isChosen = isNamed(zone, value);
    const country = nameOfTerritory(zone.country, code);
    return (
        <div class="row" data-row={zone.id}>
            <button
                type="button"
                class="control zone"
                aria-pressed={isChosen}
                onClick={() => {
                    onChoose(zone);
                }}
            >
                {isChosen ? <Icon name="done" /> : <span class="icon" />}
                <span class="name">
                    <bdi>{zone.city}</bdi> {country !== zone.city && <bdi class="country">{country}</bdi>}
                </span>{' '}
                <LocalTime zone={zone.id} now={now} />
            </button>
        </div>
    );
}

function LocalTime({ zone, now }: { readonly zone: string; readonly now: number }): JSX.Element {
    return <bdi class="value">{useLocalTime(zone, usePage().language.code, now, 'day and time')}</bdi>;
}
