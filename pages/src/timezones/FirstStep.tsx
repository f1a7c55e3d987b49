import type { JSX } from 'preact';
import { useLayoutEffect, useRef } from 'preact/hooks';

import { usePage } from '../components/context';
import { Count } from '../components/Count';
import { Field } from '../components/Field';
import { Row } from '../components/Row';
import { shortened } from '../settings/format';
import { nameOfZone } from './names';
import { useSearch, type Loading } from './useZones';
import { ZoneOption, type Choice } from './ZoneOption';
import { isNamed, zonesOf, type Region } from './zones';

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

function Waiting({ hasFailed, tryAgain }: Loading): JSX.Element {
    const { t } = usePage().language;
    const status = useRef<HTMLParagraphElement>(null);
    const button = useRef<HTMLButtonElement>(null);
    useLayoutEffect(() => {
        (button.current ?? status.current)?.focus();
    }, [hasFailed]);
    return (
        <div data-row="retry">
            {/* Has the focus first, because the search would open the keyboard of a phone. */}
            <p ref={status} class="about" role="status" tabIndex={-1} autofocus>
                {t(hasFailed ? 'refused.no-reply' : 'loading')}
            </p>
            {hasFailed && (
                <button ref={button} type="button" class="button" onClick={tryAgain}>
                    {t('tryAgain')}
                </button>
            )}
        </div>
    );
}

interface RegionsProps extends Pick<Props, 'choice' | 'onOpen'> {
    readonly regions: readonly Region[];
}

function Regions({ regions, choice, onOpen }: RegionsProps): JSX.Element {
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
