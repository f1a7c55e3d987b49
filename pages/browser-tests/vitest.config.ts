import { defineConfig } from 'vitest/config';

export default defineConfig({
    test: {
        // Tests, or with PICTURES set the pictures for the documents.
        include: [`browser-tests/**/*.${process.env['PICTURES'] === undefined ? 'browser' : 'pictures'}.ts`],
        globalSetup: 'browser-tests/chromium.ts',
        testTimeout: 20_000,
        hookTimeout: 20_000,
        pool: 'forks',
        maxWorkers: 2,
        minWorkers: 1,
        isolate: false,
    },
});
