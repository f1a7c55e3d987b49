import type { JSX } from 'preact';
import { useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { CityStep } from './CityStep';
import { FirstStep } from './FirstStep';
import { useArrows } from './useArrows';
import { useEarlyKeys } from './useEarlyKeys';
import { useFirstFocus } from './useFirstFocus';
import type { Loading } from './useZones';
import type { Choice } from './ZoneOption';
import type { Region } from './zones';

interface Props {
    readonly loading: Loading;
    /** The one whose cities are shown. */
    readonly region: Region | null;
    readonly choice: Choice;
    readonly onOpen: (region: Region) => void;
    readonly onLeave: () => void;
}

/** The first step, or the cities of a region; moves the focus between and within them. */
export function Steps({ loading, region, choice, onOpen, onLeave }: Props): JSX.Element {
    const { direction } = usePage().language;
    const [typed, setTyped] = useState('');
    const { panel, focusAt, handleKey, use } = useArrows(region?.letters ?? [], direction, onLeave, (text) => {
        onLeave();
        setTyped(typed + text);
    });
    useFirstFocus(loading, region, choice.value, typed !== '', focusAt);
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
