import { defineConfig } from 'vite';

import { settingsClient } from './settingsClient';
import { translationsAsLists } from './translationsAsLists';

export default defineConfig({
    ...settingsClient,
    plugins: [translationsAsLists],
    esbuild: { jsx: 'automatic', jsxImportSource: 'preact', legalComments: 'none' },
    build: {
        target: 'es2022',
        // The host serves from memory and refuses inline scripts and styles.
        assetsInlineLimit: 0,
        modulePreload: { polyfill: false },
        rollupOptions: { input: ['index.html', 'device.html'] },
    },
});
