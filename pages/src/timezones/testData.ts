import type { Region } from './zones';

const generated = import.meta.glob('./generated/*.json', { eager: true, import: 'default' });

/** The regions as the panel has them in a language. */
export function regionsIn(code: string): readonly Region[] {
    return generated[`./generated/${code}.json`] as readonly Region[];
}
