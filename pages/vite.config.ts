import { defineConfig } from 'vite';

import './scripts/generate-catalogue.mjs';

export default defineConfig({
    esbuild: { jsx: 'automatic', jsxImportSource: 'preact', legalComments: 'none' },
    build: {
        target: 'es2022',
        // The host serves from memory and refuses inline scripts and styles.
        assetsInlineLimit: 0,
        modulePreload: { polyfill: false },
        rollupOptions: { input: ['index.html', 'device.html'] },
    },
});
