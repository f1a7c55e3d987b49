import { defineConfig } from 'vitest/config';

import './scripts/generate-catalogue.mjs';

export default defineConfig({
    esbuild: { jsx: 'automatic', jsxImportSource: 'preact' },
    test: {
        include: ['src/**/*.test.{ts,tsx}'],
        environment: 'happy-dom',
        // Setting up a page and the modules anew for each file would take four times as long as the tests.
        pool: 'threads',
        isolate: false,
    },
});
