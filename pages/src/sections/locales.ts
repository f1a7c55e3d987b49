/** The list with one locale at another place; places beyond its ends are its ends. */
export function movedTo(locales: readonly string[], from: number, to: number): string[] {
    const list = [...locales];
    const moved = list.splice(from, 1);
    list.splice(Math.max(0, to), 0, ...moved);
    return list;
}

export function without(locales: readonly string[], index: number): string[] {
    return locales.filter((_locale, other) => other !== index);
}

/** A name for each row: the locale, made unique, for it may be there twice. */
export function rowNames(locales: readonly string[]): string[] {
    return locales.map((locale, index) => (locales.indexOf(locale) === index ? locale : `${locale} ${index}`));
}

/** A locale that was picked up, and the list as it would be if it were dropped. */
export interface PickedUp {
    readonly rows: readonly string[];
    readonly locales: readonly string[];
    readonly index: number;
}

export function pickedUp(locales: readonly string[], index: number): PickedUp {
    return { rows: rowNames(locales), locales, index };
}

/** One place up (-1) or down (1), not past the ends. */
export function carried({ rows, locales, index }: PickedUp, by: 1 | -1): PickedUp {
    const to = Math.max(0, Math.min(locales.length - 1, index + by));
    return { rows: movedTo(rows, index, to), locales: movedTo(locales, index, to), index: to };
}
