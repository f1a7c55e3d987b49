import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Row } from '../components/Row';
import { shortened } from '../settings/format';
import { nameOfZone } from './names';
import { ZoneOption, type Choice } from './ZoneOption';
import { isNamed, zonesOf, type Region } from './zones';

interface Props {
    readonly regions: readonly Region[];
    readonly choice: Choice;
    readonly onOpen: (region: Region) => void;
}

/** The present zone, then the regions. */
export function Regions({ regions, choice, onOpen }: Props): JSX.Element {
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
