import type { JSX } from 'preact';
import { useLayoutEffect, useRef, useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { Panel } from '../components/Panel';
import { CityStep } from './CityStep';
import { FirstStep } from './FirstStep';
import { useMinute } from './times';
import { useArrows } from './useArrows';
import { useEarlyKeys } from './useEarlyKeys';
import { useRegions, type Loading } from './useZones';
import type { Choice } from './ZoneOption';
import { identifierOf, isNamed, type Region } from './zones';

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

interface StepsProps {
    readonly loading: Loading;
    /** The one whose cities are shown. */
    readonly region: Region | null;
    readonly choice: Choice;
    readonly onOpen: (region: Region) => void;
    readonly onLeave: () => void;
}

function Steps({ loading, region, choice, onOpen, onLeave }: StepsProps): JSX.Element {
    const { direction } = usePage().language;
    const [typed, setTyped] = useState('');
    const opened = useRef<Region | null>(null);
    const { regions } = loading;
    const { panel, focusAt, handleKey, use } = useArrows(region?.letters ?? [], direction, onLeave, (text) => {
        onLeave();
        setTyped(typed + text);
    });
    useLayoutEffect(() => {
        if (regions === null) {
            return;
        }
        if (region !== null) {
            const present = region.zones.findIndex((zone) => isNamed(zone, choice.value));
            focusAt('cities', Math.max(0, present));
        } else {
            // Below the search, and the present zone if there is one.
            const first = choice.value ? 2 : 1;
            const before = opened.current === null ? 1 : first + regions.indexOf(opened.current);
            focusAt('rows', typed === '' ? before : 0);
        }
        opened.current = region;
    }, [region, regions === null]);
    // After the effect above: they start from where it leads.
    const earlyKeys = useEarlyKeys(loading, direction, use);
    return (
        <div
            ref={panel}
            onKeyDown={(event) => {
                if (!earlyKeys.keep(event)) {
                    handleKey(event);
                }
            }}
        >
            {region === null ? (
                <FirstStep
                    loading={loading}
                    choice={choice}
                    typed={typed}
                    onType={(text) => {
                        // What is typed leads into the search from anywhere.
                        earlyKeys.forget();
                        setTyped(text);
                    }}
                    onOpen={onOpen}
                    focusAt={(index) => {
                        focusAt('rows', index);
                    }}
                />
            ) : (
                <CityStep
                    region={region}
                    choice={choice}
                    focusAt={(index) => {
                        focusAt('cities', index);
                    }}
                />
            )}
        </div>
    );
}
