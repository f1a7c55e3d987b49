import type { Region } from './zones';

/** Where the generated files are. */
const folder = import.meta.env.DEV ? '/src/timezones/generated' : '/timezones';

const loaded = new Map<string, readonly Region[]>();

/** The regions and their time zones, by their names in a language of the pages. */
export async function loadRegions(code: string): Promise<readonly Region[]> {
    const regions = loaded.get(code) ?? ((await (await fetch(`${folder}/${code}.json`)).json()) as readonly Region[]);
    loaded.set(code, regions);
    return regions;
}

/** The regions in a language if they have been loaded. */
export function loadedRegions(code: string): readonly Region[] {
    return loaded.get(code) ?? [];
}
