/** What a person can choose: a time zone by the name of its city. */
export interface Zone {
    /** Its identifier in the tz database. */
    readonly id: string;
    /** Older identifiers of it, and others that mean the same. */
    readonly others: readonly string[];
    /** The code of its country; empty for UTC. */
    readonly country: string;
    /** The code of its region; empty for UTC. */
    readonly region: string;
    readonly city: string;
}

/** The order of the regions; UTC comes after them. */
export const regionCodes = ['002', '003', '005', '142', '150', '009', 'AQ'] as const;

/** A zone as the generated file has it, without its city. */
export type ZoneEntry = readonly [id: string, others: string, country: string, region: string];

export function zonesFrom(entries: readonly ZoneEntry[], cities: readonly string[]): readonly Zone[] {
    return entries.map(([id, others, country, region], index) => ({
        id,
        others: others.split(' ').filter(Boolean),
        country,
        region,
        city: cities[index] ?? '',
    }));
}

/** Whether an identifier, old or new, means this zone. */
export function isNamed({ id, others }: Zone, name: string | undefined): boolean {
    return name !== undefined && (id === name || others.includes(name));
}

function isKnown(id: string): boolean {
    try {
        new Intl.DateTimeFormat('en', { timeZone: id });
        return true;
    } catch {
        return false;
    }
}

/**
 * The identifier to set for a zone: the one that the TV reports if it means this zone; otherwise the newest that the TV's
 * browser knows, because a TV that was made before a city got its new name knows the old one alone.
 */
export function identifierOf(zone: Zone, reported: string | undefined, knows = isKnown): string {
    if (reported !== undefined && isNamed(zone, reported)) {
        return reported;
    }
    return [zone.id, ...zone.others].find(knows) ?? zone.id;
}
