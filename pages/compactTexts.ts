import { readFile } from 'node:fs/promises';

import { transformWithEsbuild, type Plugin } from 'vite';

type Translation = Readonly<Record<string, Readonly<Record<string, string>>>>;

async function evaluated(code: string, language: string): Promise<Translation> {
    const { code: script } = await transformWithEsbuild(code, `${language}.ts`);
    const url = `data:text/javascript,${encodeURIComponent(script)}`;
    return ((await import(url)) as Record<string, Translation>)[language] ?? {};
}

/** Builds the translations as lists, in the order of the English texts: their keys would be a twentieth of the pages. */
export const translationsAsLists: Plugin = {
    name: 'translations-as-lists',
    apply: 'build',
    enforce: 'pre',
    async transform(code, id) {
        const language = /\/i18n\/(?!en)(\w\w)\.ts$/.exec(id)?.[1];
        if (language === undefined) {
            return null;
        }
        const english = await evaluated(await readFile(new URL('src/i18n/en.ts', import.meta.url), 'utf8'), 'en');
        const translation = await evaluated(code, language);
        const texts = Object.entries(english).flatMap(([group, members]) =>
            Object.keys(members).map((key) => translation[group]?.[key]),
        );
        return {
            code: `import { fromList } from './fromList'; export const ${language} = fromList(${JSON.stringify(texts)});`,
            map: null,
        };
    },
};
