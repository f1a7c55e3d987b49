import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Count } from '../components/Count';
import { Field } from '../components/Field';
import { Regions } from './Regions';
import { useSearch, type Loading } from './useZones';
import { Waiting } from './Waiting';
import { ZoneOption, type Choice } from './ZoneOption';
import type { Region } from './zones';

interface Props {
    readonly loading: Loading;
    readonly choice: Choice;
    readonly typed: string;
    readonly onType: (text: string) => void;
    readonly onOpen: (region: Region) => void;
    /** Moves the focus to a row. */
    readonly focusAt: (index: number) => void;
}

const none: readonly Region[] = [];

/** The search, the present zone and the regions; or what the search finds. */
export function FirstStep({ focusAt, onType, ...props }: Props): JSX.Element {
    const { loading, choice, typed } = props;
    const { regions } = loading;
    const { t, code } = usePage().language;
    const found = useSearch(typed, regions ?? none, code);
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
            {regions === null ? <Waiting {...loading} /> : <Count of={typed === '' ? null : found.length} />}
            {regions !== null && typed === '' ? (
                <Regions {...props} regions={regions} />
            ) : (
                found.map((zone) => <ZoneOption key={zone.id} zone={zone} choice={choice} />)
            )}
        </div>
    );
}
