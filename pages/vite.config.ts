import { defineConfig } from 'vite';

import { settingsClient } from './settingsClient';

/** `--mode gallery` adds the page of all components, which is no part of the product. */
export default defineConfig(({ mode }) => ({
    ...settingsClient,
    esbuild: { jsx: 'automatic', jsxImportSource: 'preact', legalComments: 'none' },
    build: {
        target: 'es2022',
        // The host serves from memory and refuses inline scripts and styles.
        assetsInlineLimit: 0,
        modulePreload: { polyfill: false },
        rollupOptions: { input: ['index.html', 'device.html', ...(mode === 'gallery' ? ['gallery.html'] : [])] },
    },
}));
