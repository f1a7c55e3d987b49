import { readdirSync, readFileSync } from 'node:fs';

import { defineConfig, type Plugin } from 'vite';

import { compactTexts } from './compactTexts';
import { compileHints } from './compileHints';
import { settingsClient } from './settingsClient';
import { shortCustomProperties } from './shortCustomProperties';

const generated = 'src/timezones/generated';

/** The data about time zones, and their licence. */
const timeZones: Plugin = {
    name: 'time zones',
    apply: 'build',
    generateBundle() {
        for (const name of readdirSync(generated)) {
            this.emitFile({
                type: 'asset',
                fileName: `timezones/${name}`,
                source: readFileSync(`${generated}/${name}`),
            });
        }
        const source = readFileSync('node_modules/cldr-core/LICENSE');
        this.emitFile({ type: 'asset', fileName: 'timezones/LICENSE.txt', source });
    },
};

/**
 * One script for both pages but what only the simulated TV has: two scripts would be half a kilobyte more. The texts in other
 * letters are apart, because these do not compress well together.
 */
function chunkOf(id: string): string | undefined {
    if (/\/i18n\/\w\w\.ts$/.test(id)) {
        return /(ar|ja)\.ts$/.test(id) ? 'texts-ar-ja' : 'texts';
    }
    return /\/src\/(device|gallery)\/|\.html/.test(id) ? undefined : 'pages';
}

/** Without the blanks between the tags below the first line, and without an attribute that files of the same host do not need. */
const shortHtml: Plugin = {
    name: 'short-html',
    apply: 'build',
    transformIndexHtml: {
        order: 'post',
        handler: (html) => html.replace(/>\s+<(?!html)/g, '><').replaceAll(' crossorigin', ''),
    },
};

/** `--mode gallery` adds the page of all components, which is no part of the product. */
export default defineConfig(({ mode }) => ({
    ...settingsClient,
    plugins: [timeZones, compactTexts(), shortCustomProperties, shortHtml, compileHints],
    // The calls of `h` are shorter than those of the automatic transformation.
    esbuild: {
        jsx: 'transform',
        jsxFactory: 'h',
        jsxFragment: 'Fragment',
        jsxInject: "import { Fragment, h } from 'preact'",
        legalComments: 'none',
    },
    worker: { rollupOptions: { output: { entryFileNames: 'assets/[name].js' } } },
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
            compress: {
                passes: 5,
                pure_getters: true,
                keep_fargs: false,
                unsafe: true,
                unsafe_methods: true,
                unsafe_arrows: true,
                // Functions without parameters at most: calls are shorter than their copies.
                // eslint-disable-next-line @typescript-eslint/no-unsafe-enum-assignment
                inline: 1,
            },
            // The internal members of Preact, which is in one script.
            mangle: { properties: { regex: /^_/ } },
            format: { comments: false },
        },
        rollupOptions: {
            input: ['index.html', 'device.html', ...(mode === 'gallery' ? ['gallery.html'] : [])],
            output: {
                manualChunks: chunkOf,
                // The host has browsers keep nothing, so that no name needs to change.
                entryFileNames: 'assets/[name].js',
                chunkFileNames: 'assets/[name].js',
                assetFileNames: 'assets/[name][extname]',
            },
        },
    },
}));
