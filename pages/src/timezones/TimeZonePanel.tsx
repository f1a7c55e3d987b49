import type { JSX } from 'preact';
import { useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { Panel } from '../components/Panel';
import { Steps } from './Steps';
import { useMinute } from './times';
import { useRegions } from './useZones';
import type { Choice } from './ZoneOption';
import { identifierOf, type Region } from './zones';

interface Props {
    readonly title: string;
    /** The identifier that the TV reports. */
    readonly value: string | undefined;
    readonly onChoose: (identifier: string) => void;
    readonly onClose: () => void;
}

/** The time zones: region first, then city. */
export function TimeZonePanel({ title, value, onChoose, onClose }: Props): JSX.Element {
    const { code } = usePage().language;
    const [region, setRegion] = useState<Region | null>(null);
    const loading = useRegions(code);
    const choice: Choice = {
        value,
        now: useMinute(),
        onKeep: onClose,
        onChoose: (zone) => {
            onChoose(identifierOf(zone, value));
        },
    };
    const leave = () => {
        setRegion(null);
    };
    return (
        <Panel title={region === null ? title : `${title}: ${region.name}`} onClose={region === null ? onClose : leave}>
            <Steps loading={loading} region={region} choice={choice} onOpen={setRegion} onLeave={leave} />
        </Panel>
    );
}
