import type { Plugin } from 'vite';

/** The scripts that run before the first settings are drawn. */
const early = /^(index|pages)$/;

/** Has browsers compile the functions of these scripts while they load them, instead of each when it is called first. */
export const compileHints: Plugin = {
    name: 'compile-hints',
    apply: 'build',
    generateBundle(_options, bundle) {
        for (const chunk of Object.values(bundle)) {
            if (chunk.type === 'chunk' && early.test(chunk.name)) {
                chunk.code = `//# allFunctionsCalledOnLoad\n${chunk.code}`;
            }
        }
    },
};
