import type { JSX } from 'preact';
import { useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { Field } from '../components/Field';
import { Icon } from '../icons';
import { shortened } from '../settings/format';
import { nameOfTerritory, nameOfZone } from './names';
import { useSearch } from './useZones';
import { ZoneOption, type Choice } from './ZoneOption';
import { isNamed, regionCodes, type Zone } from './zones';

interface Props {
    readonly zones: readonly Zone[];
    readonly choice: Choice;
    readonly onOpen: (region: string) => void;
    /** Moves the focus to a row. */
    readonly focusAt: (index: number) => void;
}

/** The search, the present zone and the regions; or what the search finds. */
export function FirstStep({ zones, choice, onOpen, focusAt }: Props): JSX.Element {
    const { t, code } = usePage().language;
    const [typed, setTyped] = useState('');
    const found = useSearch(typed, zones, code);
    const isSearch = typed.trim() !== '';
    return (
        <div class="scrolled" data-column="rows">
            <form
                onSubmit={(event) => {
                    event.preventDefault();
                    focusAt(1);
                }}
            >
                <Field row="search" label={t('timezone.search')} text={typed} onEdit={setTyped} />
            </form>
            <p class="about" role="status">
                {isSearch && (found.length === 0 ? t('nothingFound') : t('found', { count: `${found.length}` }))}
            </p>
            {isSearch ? (
                found.map((zone) => <ZoneOption key={zone.id} zone={zone} choice={choice} />)
            ) : (
                <Regions zones={zones} choice={choice} onOpen={onOpen} />
            )}
        </div>
    );
}

function Regions({ zones, choice, onOpen }: Omit<Props, 'focusAt'>): JSX.Element {
    const { code } = usePage().language;
    const present = zones.find((zone) => isNamed(zone, choice.value));
    const others = zones.filter(({ region }) => region === '');
    return (
        <>
            {present === undefined ? <OtherZone choice={choice} /> : <ZoneOption zone={present} choice={choice} />}
            {regionCodes.map((region) => (
                <div key={region} class="row" data-row={region}>
                    <button
                        type="button"
                        class="control"
                        onClick={() => {
                            onOpen(region);
                        }}
                    >
                        <span class="name">{nameOfTerritory(region, code)}</span>
                        <Icon name="opens" class="mark" />
                    </button>
                </div>
            ))}
            {others
                .filter((zone) => zone !== present)
                .map((zone) => (
                    <ZoneOption key={zone.id} zone={zone} choice={choice} />
                ))}
        </>
    );
}

/** What the TV reports when it is none of the zones in the list, such as a distance from UTC. */
function OtherZone({ choice: { value, onKeep } }: Pick<Props, 'choice'>): JSX.Element | null {
    const { code } = usePage().language;
    if (value === undefined || value === '') {
        return null;
    }
    return (
        <div class="row" data-row="present">
            <button type="button" class="control zone" aria-pressed onClick={onKeep}>
                <Icon name="done" />
                <bdi class="name">{nameOfZone(value, code) ?? shortened(value)}</bdi>
            </button>
        </div>
    );
}
