import { zonesFrom, type Zone, type ZoneEntry } from './zones';

/** The addresses of the generated files, by their names. */
const addresses = import.meta.glob<string>('./generated/*.json', { eager: true, query: '?url', import: 'default' });

const files = new Map<string, Promise<unknown>>();
const loaded = new Map<string, readonly Zone[]>();

async function fetchFile(name: string): Promise<unknown> {
    const answer = await fetch(addresses[`./generated/${name}.json`] ?? '');
    if (!answer.ok) {
        throw new Error(`${name}: ${answer.status}`);
    }
    return answer.json();
}

/** A file is loaded once; after a failure it is tried again the next time. */
function file(name: string): Promise<unknown> {
    const loading = files.get(name) ?? fetchFile(name);
    files.set(name, loading);
    loading.catch(() => files.delete(name));
    return loading;
}

/** The time zones with the names of their cities in a language of the pages. */
export async function loadZones(code: string): Promise<readonly Zone[]> {
    const [entries, cities] = await Promise.all([file('zones'), file(`cities-${code}`)]);
    const zones = loaded.get(code) ?? zonesFrom(entries as ZoneEntry[], cities as string[]);
    loaded.set(code, zones);
    return zones;
}

/** The zones in a language if they have been loaded. */
export function loadedZones(code: string): readonly Zone[] | undefined {
    return loaded.get(code);
}
