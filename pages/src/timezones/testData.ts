import { zonesFrom, type Zone, type ZoneEntry } from './zones';

const generated = import.meta.glob('./generated/*.json', { eager: true, import: 'default' });

/** The zones as the panel has them in a language. */
export function zonesIn(code: string): readonly Zone[] {
    return zonesFrom(
        generated['./generated/zones.json'] as ZoneEntry[],
        generated[`./generated/cities-${code}.json`] as string[],
    );
}
