/** The locales in the value of a locale setting, the primary one first; none when the value is not a JSON array. */
export function localesOf(value: string | undefined): string[] {
    try {
        const list: unknown = JSON.parse(value ?? '');
        return Array.isArray(list)
            ? list.filter((locale): locale is string => typeof locale === 'string' && locale !== '')
            : [];
    } catch {
        return [];
    }
}

/** The two texts of a pair; null when the value has another form, which must be kept as it is. */
export function pairOf(value: string): [string, string] | null {
    try {
        const list: unknown = JSON.parse(value === '' ? '[]' : value);
        if (Array.isArray(list) && list.length <= 2 && list.every((part) => typeof part === 'string')) {
            return [list[0] ?? '', list[1] ?? ''];
        }
    } catch {
        // Not JSON.
    }
    return null;
}
