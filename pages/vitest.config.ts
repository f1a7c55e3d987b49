import { defineConfig } from 'vitest/config';

import { settingsClient } from './settingsClient';

export default defineConfig({
    ...settingsClient,
    esbuild: { jsx: 'automatic', jsxImportSource: 'preact' },
    test: {
        include: ['src/**/*.test.{ts,tsx}', '../clients/javascript/src/**/*.test.ts'],
        environment: 'happy-dom',
        // Setting up a page and the modules anew for each file would take four times as long as the tests.
        pool: 'threads',
        isolate: false,
    },
});
