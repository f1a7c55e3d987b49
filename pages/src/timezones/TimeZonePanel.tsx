import type { JSX } from 'preact';
import { useLayoutEffect, useRef, useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { Panel } from '../components/Panel';
import { CityStep } from './CityStep';
import { FirstStep } from './FirstStep';
import { useMinute } from './times';
import { useArrows } from './useArrows';
import { useRegions } from './useZones';
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
    const { regions, hasFailed, tryAgain } = useRegions(code);
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
            {regions === null ? (
                <Waiting hasFailed={hasFailed} onTryAgain={tryAgain} />
            ) : (
                <Steps regions={regions} region={region} choice={choice} onOpen={setRegion} onLeave={leave} />
            )}
        </Panel>
    );
}

interface WaitingProps {
    readonly hasFailed: boolean;
    readonly onTryAgain: () => void;
}

function Waiting({ hasFailed, onTryAgain }: WaitingProps): JSX.Element {
    const { t } = usePage().language;
    const button = useRef<HTMLButtonElement>(null);
    useLayoutEffect(() => {
        button.current?.focus();
    }, [hasFailed]);
    return (
        <div data-row="retry">
            <p class="about" role="status">
                {t(hasFailed ? 'refused.no-reply' : 'loading')}
            </p>
            {hasFailed && (
                <button ref={button} type="button" class="button" onClick={onTryAgain}>
                    {t('tryAgain')}
                </button>
            )}
        </div>
    );
}

interface StepsProps {
    readonly regions: readonly Region[];
    /** The one whose cities are shown. */
    readonly region: Region | null;
    readonly choice: Choice;
    readonly onOpen: (region: Region) => void;
    readonly onLeave: () => void;
}

function Steps({ regions, region, choice, onOpen, onLeave }: StepsProps): JSX.Element {
    const { direction } = usePage().language;
    const [typed, setTyped] = useState('');
    const opened = useRef<Region | null>(null);
    const { panel, focusAt, handleKey } = useArrows(region?.letters ?? [], direction, onLeave, (text) => {
        onLeave();
        setTyped(typed + text);
    });
    useLayoutEffect(() => {
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
    }, [region]);
    return (
        <div ref={panel} onKeyDown={handleKey}>
            {region === null ? (
                <FirstStep
                    regions={regions}
                    choice={choice}
                    typed={typed}
                    onType={setTyped}
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
