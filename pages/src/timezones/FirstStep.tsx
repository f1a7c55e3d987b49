import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Field } from '../components/Field';
import { Row } from '../components/Row';
import { shortened } from '../settings/format';
import { nameOfZone } from './names';
import { useSearch } from './useZones';
import { ZoneOption, type Choice } from './ZoneOption';
import { isNamed, zonesOf, type Region } from './zones';

interface Props {
    readonly regions: readonly Region[];
    readonly choice: Choice;
    readonly typed: string;
    readonly onType: (text: string) => void;
    readonly onOpen: (region: Region) => void;
    /** Moves the focus to a row. */
    readonly focusAt: (index: number) => void;
}

/** The search, the present zone and the regions; or what the search finds. */
export function FirstStep({ focusAt, onType, ...props }: Props): JSX.Element {
    const { regions, choice, typed } = props;
    const { t, code } = usePage().language;
    const found = useSearch(typed, regions, code);
    return (
        <div data-column="rows">
            <form
                onSubmit={(event) => {
                    event.preventDefault();
                    focusAt(1);
                }}
            >
                <Field row="search" label={t('timezone.search')} text={typed} onEdit={onType} />
            </form>
            <p class="about" role="status">
                {typed !== '' && (found.length === 0 ? t('nothingFound') : t('found', { count: `${found.length}` }))}
            </p>
            {typed === '' ? (
                <Regions {...props} />
            ) : (
                found.map((zone) => <ZoneOption key={zone.id} zone={zone} choice={choice} />)
            )}
        </div>
    );
}

function Regions({ regions, choice, onOpen }: Pick<Props, 'regions' | 'choice' | 'onOpen'>): JSX.Element {
    const { code } = usePage().language;
    const { value = '', onKeep } = choice;
    const present = zonesOf(regions).find((zone) => isNamed(zone, value));
    return (
        <>
            {present !== undefined && <ZoneOption zone={present} choice={choice} />}
            {present === undefined && value !== '' && (
                // None of the list, such as a distance from UTC.
                <Row
                    kind="acts"
                    row="present"
                    icon="done"
                    name={nameOfZone(value, code) ?? shortened(value)}
                    onUse={onKeep}
                />
            )}
            {regions.map((region) =>
                region.name === '' ? (
                    region.zones
                        .filter((zone) => zone !== present)
                        .map((zone) => <ZoneOption key={zone.id} zone={zone} choice={choice} />)
                ) : (
                    <Row
                        key={region.name}
                        kind="opens"
                        row={region.name}
                        icon="language"
                        name={region.name}
                        onUse={() => {
                            onOpen(region);
                        }}
                    />
                ),
            )}
        </>
    );
}
