/** A time zone that a person can choose, by the name of its city. */
export interface Zone {
    /** Its newest identifier in the tz database. */
    readonly id: string;
    readonly city: string;
    /** The code of its country; empty for UTC. */
    readonly country: string;
    /** Whether it is the usual one of a country that has several. */
    readonly isMain?: boolean;
    /** Older identifiers of it, and others that mean the same. */
    readonly others: readonly string[];
}

/** The cities with which a letter of the list begins, such as "A" or "B–D". */
export interface Letter {
    readonly label: string;
    /** The number of its first city. */
    readonly start: number;
}

export interface Region {
    /** Empty for UTC. */
    readonly name: string;
    /** In the order of the cities. */
    readonly zones: readonly Zone[];
    readonly letters: readonly Letter[];
}

export function zonesOf(regions: readonly Region[]): readonly Zone[] {
    return regions.flatMap(({ zones }) => zones);
}

/** Whether an identifier, old or new, means this zone. */
export function isNamed({ id, others }: Zone, name = ''): boolean {
    return id === name || others.includes(name);
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
export function identifierOf(zone: Zone, reported = '', knows = isKnown): string {
    return isNamed(zone, reported) ? reported : ([zone.id, ...zone.others].find(knows) ?? zone.id);
}
