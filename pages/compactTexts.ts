import { readdir, readFile } from 'node:fs/promises';

import { transformWithEsbuild, type Plugin } from 'vite';

type Translation = Readonly<Record<'settings' | 'about' | 'choices' | 'texts', Readonly<Record<string, string>>>>;

const sources = new URL('src/', import.meta.url);

async function read(code: string): Promise<Translation> {
    const file = new URL(`i18n/${code}.ts`, sources);
    const { code: script } = await transformWithEsbuild(await readFile(file, 'utf8'), file.pathname);
    const url = `data:text/javascript,${encodeURIComponent(script)}`;
    return ((await import(url)) as Record<string, Translation>)[code] as Translation;
}

/** The groups of texts whose keys are put together when the pages run: `refused` of `refused.${reason}`. */
async function computedGroups(): Promise<Set<string>> {
    const names = (await readdir(sources, { recursive: true })).filter((name) => /\.tsx?$/.test(name));
    const files = await Promise.all(names.map((name) => readFile(new URL(name, sources), 'utf8')));
    return new Set(files.flatMap((code) => [...code.matchAll(/`(\w+)\.\$\{/g)].map(([, group]) => group as string)));
}

interface Keys {
    readonly settings: readonly string[];
    readonly choices: readonly string[];
    /** The texts that are found by their key: those of computed groups, and keys of one word, which may be any word of the code. */
    readonly named: readonly string[];
    /** The texts that the code names in full. The build replaces their keys by their numbers. */
    readonly numbered: readonly string[];
}

async function keysOf({ texts }: Translation): Promise<Keys> {
    const file = await readFile(new URL('../SettingsHandler/catalogue.json', import.meta.url), 'utf8');
    const { settings } = JSON.parse(file) as { settings: { key: string; values?: string[] }[] };
    const computed = await computedGroups();
    const isNamed = (key: string) => !key.includes('.') || computed.has(key.replace(/\..*/, ''));
    return {
        settings: settings.map(({ key }) => key),
        choices: settings.flatMap(({ values = [] }) => values),
        named: Object.keys(texts).filter(isNamed),
        numbered: Object.keys(texts).filter((key) => !isNamed(key)),
    };
}

/** The texts of a translation, separated by bars, as `fromLines` reads them. */
function linesOf({ settings, about, choices, texts }: Translation, keys: Keys): string {
    const lines = [
        ...keys.settings.map((key) => settings[key]),
        ...keys.settings.map((key) => about[key]),
        ...keys.choices.map((key) => choices[key]),
        ...[...keys.named, ...keys.numbered].map((key) => texts[key]),
    ];
    if (lines.some((line) => line === undefined || line.includes('|'))) {
        throw new Error('a text is missing, or contains the bar that separates the texts');
    }
    return lines.join('|');
}

/** Makes translations of `lines`, each when it is used. */
const fromLines = (names: readonly string[]) => `
    import { fromLines } from './fromLines';
    const names = ${JSON.stringify(names)};
    export const translations = {};
    for (const [code, text] of Object.entries(lines)) {
        Object.defineProperty(translations, code, { enumerable: true, get: () => fromLines(text, names) });
    }`;

/** Builds the translations as lines of text, and uses of a key as its number: the keys would be a twentieth of the pages. */
export function compactTexts(): Plugin {
    let keys: Keys;
    return {
        name: 'compact-texts',
        apply: 'build',
        enforce: 'pre',
        async buildStart() {
            keys = await keysOf(await read('en'));
        },
        async transform(code, id) {
            const language = /\/i18n\/(\w\w)\.ts$/.exec(id)?.[1];
            if (language !== undefined) {
                const lines = linesOf(await read(language), keys);
                return { code: `export const ${language} = ${JSON.stringify(lines)};`, map: null };
            }
            if (id.endsWith('/i18n/translations.ts')) {
                const lines = code.replace(/export const translations[^=]*/, 'const lines');
                return { code: lines + fromLines(keys.named), map: null };
            }
            if (!/\/pages\/src\/(?!i18n).*\.tsx?$/.test(id)) {
                return null;
            }
            const numbered = code.replace(/(['"])(\w+\.[\w-]+)\1/g, (literal, _quote, key: string) => {
                const number = keys.numbered.indexOf(key);
                return number < 0 ? literal : String(number);
            });
            return { code: numbered, map: null };
        },
    };
}
