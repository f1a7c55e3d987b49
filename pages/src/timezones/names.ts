import { kept } from '../i18n/kept';
import { loadedRegions } from './load';
import { isNamed, zonesOf } from './zones';

/** The browser's own name of a zone, such as "Pacific Time"; null when it does not know the zone. */
function nameInBrowser(id: string, code: string): string | null {
    try {
        const { timeZone } = new Intl.DateTimeFormat(code, { timeZone: id }).resolvedOptions();
        const timeZoneName = timeZone === 'UTC' ? 'long' : 'longGeneric';
        const parts = new Intl.DateTimeFormat(code, { timeZone: id, timeZoneName }).formatToParts();
        return parts.find(({ type }) => type === 'timeZoneName')?.value ?? null;
    } catch {
        return null;
    }
}

/** The name of a zone: its city once the cities have been loaded; null for what is no time zone. */
export function nameOfZone(id: string, code: string): string | null {
    return zonesOf(loadedRegions(code)).find((zone) => isNamed(zone, id))?.city ?? nameInBrowser(id, code);
}

const territoriesIn = kept((code) => new Intl.DisplayNames([code], { type: 'region' }));

/** The name of a country in a language, from the browser's own data; empty for none. */
export function nameOfTerritory(territory: string, code: string): string {
    return territory === '' ? '' : (territoriesIn(code).of(territory) ?? '');
}
