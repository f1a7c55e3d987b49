import { defineConfig } from 'vite';

import { settingsClient } from './settingsClient';

export default defineConfig({
    ...settingsClient,
    esbuild: { jsx: 'automatic', jsxImportSource: 'preact', legalComments: 'none' },
    build: {
        target: 'es2022',
        // The host serves from memory and refuses inline scripts and styles.
        assetsInlineLimit: 0,
        modulePreload: { polyfill: false },
        rollupOptions: { input: ['index.html', 'device.html'] },
    },
});
