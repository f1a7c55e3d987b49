import type { JSX } from 'preact';
import { useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { Panel } from '../components/Panel';
import { CityStep } from './CityStep';
import { FirstStep } from './FirstStep';
import { letterGroups, sortedByCity } from './letters';
import { groupSize } from './moves';
import { nameOfTerritory } from './names';
import { useMinute } from './times';
import { useArrows } from './useArrows';
import { useZones } from './useZones';
import type { Choice } from './ZoneOption';
import { identifierOf, isNamed, regionCodes, type Zone } from './zones';

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
    const [region, setRegion] = useState<string | null>(null);
    const { zones, hasFailed, tryAgain } = useZones(code);
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
        <Panel
            title={region === null ? title : `${title}: ${nameOfTerritory(region, code)}`}
            onClose={region === null ? onClose : leave}
        >
            {zones === null ? (
                <Waiting hasFailed={hasFailed} onTryAgain={tryAgain} />
            ) : (
                <Steps zones={zones} region={region} choice={choice} onOpen={setRegion} onLeave={leave} />
            )}
        </Panel>
    );
}

function Waiting({
    hasFailed,
    onTryAgain,
}: {
    readonly hasFailed: boolean;
    readonly onTryAgain: () => void;
}): JSX.Element {
    const { t } = usePage().language;
    return (
        <>
            <p class="about" role="status">
                {t(hasFailed ? 'timezone.failed' : 'loading')}
            </p>
            <div class="buttons" data-row="retry">
                <button type="button" class="button" hidden={!hasFailed} onClick={onTryAgain}>
                    {t('connection.retry')}
                </button>
            </div>
        </>
    );
}

interface StepsProps {
    readonly zones: readonly Zone[];
    readonly region: string | null;
    readonly choice: Choice;
    readonly onOpen: (region: string) => void;
    readonly onLeave: () => void;
}

function Steps({ zones, region, choice, onOpen, onLeave }: StepsProps): JSX.Element {
    const { code, direction } = usePage().language;
    const cities = useMemo(
        () =>
            sortedByCity(
                zones.filter((zone) => zone.region === region),
                code,
            ),
        [zones, region, code],
    );
    const letters = useMemo(() => letterGroups(cities, groupSize), [cities]);
    const { panel, focusAt, handleKey } = useArrows(letters, direction, onLeave);
    const opened = useRef<string | null>(null);
    useLayoutEffect(() => {
        const present = zones.find((zone) => isNamed(zone, choice.value));
        if (region === null) {
            // Below the search and the present zone.
            const before = regionCodes.findIndex((one) => one === opened.current);
            focusAt('rows', before < 0 ? 1 : before + (choice.value ? 2 : 1));
        } else {
            focusAt('cities', Math.max(0, present === undefined ? 0 : cities.indexOf(present)));
        }
        opened.current = region;
    }, [region]);
    return (
        <div class="steps" ref={panel} onKeyDown={handleKey}>
            {region === null ? (
                <FirstStep
                    zones={zones}
                    choice={choice}
                    onOpen={onOpen}
                    focusAt={(index) => {
                        focusAt('rows', index);
                    }}
                />
            ) : (
                <CityStep
                    region={nameOfTerritory(region, code)}
                    cities={cities}
                    letters={letters}
                    choice={choice}
                    focusAt={(index) => {
                        focusAt('cities', index);
                    }}
                />
            )}
        </div>
    );
}
