import { readFileSync } from 'node:fs';

import { defineConfig, type Plugin } from 'vite';

import { compactTexts } from './compactTexts';
import { compileHints } from './compileHints';
import { settingsClient } from './settingsClient';
import { shortCustomProperties } from './shortCustomProperties';

/** The licence of the data about time zones goes where the files with them are. */
const timeZoneLicence: Plugin = {
    name: 'time zone licence',
    generateBundle() {
        const source = readFileSync('node_modules/cldr-core/LICENSE');
        this.emitFile({ type: 'asset', fileName: 'timezones/LICENSE.txt', source });
    },
};

/** One script for both pages but what only the simulated TV has: two scripts would be half a kilobyte more. */
function chunkOf(id: string): string | undefined {
    if (id.endsWith('virtual:lines')) {
        return 'texts';
    }
    return /\/src\/(device|gallery)\/|\/src\/main\.tsx|\.html/.test(id) ? undefined : 'pages';
}

/** `--mode gallery` adds the page of all components, which is no part of the product. */
export default defineConfig(({ mode }) => ({
    ...settingsClient,
    plugins: [timeZoneLicence, compactTexts(), shortCustomProperties, compileHints],
    // The calls of `h` are shorter than those of the automatic transformation.
    esbuild: {
        jsx: 'transform',
        jsxFactory: 'h',
        jsxFragment: 'Fragment',
        jsxInject: "import { Fragment, h } from 'preact'",
        legalComments: 'none',
    },
    build: {
        target: 'es2022',
        // The host serves from memory and refuses inline scripts and styles.
        assetsInlineLimit: 0,
        modulePreload: { polyfill: false },
        // A kilobyte less than by esbuild.
        minify: 'terser',
        terserOptions: {
            module: true,
            ecma: 2020,
            compress: { passes: 3, pure_getters: true, keep_fargs: false, unsafe_methods: true, unsafe_arrows: true },
            format: { comments: false },
        },
        rollupOptions: {
            input: ['index.html', 'device.html', ...(mode === 'gallery' ? ['gallery.html'] : [])],
            output: {
                manualChunks: chunkOf,
                assetFileNames: ({ originalFileNames: [name] }) =>
                    `${name?.includes('/timezones/') === true ? 'timezones' : 'assets'}/[name]-[hash][extname]`,
            },
        },
    },
}));
