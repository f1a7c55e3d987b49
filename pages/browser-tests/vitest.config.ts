import { defineConfig } from 'vitest/config';

/** What to run: the tests, or what makes the pictures or the figures of the documents. */
const kind = process.env['MAKE'] ?? 'browser';

export default defineConfig({
    test: {
        include: [`browser-tests/**/*.${kind}.ts`],
        globalSetup: 'browser-tests/chromium.ts',
        testTimeout: 20_000,
        hookTimeout: 20_000,
        pool: 'forks',
        maxWorkers: 2,
        minWorkers: 1,
        isolate: false,
    },
});
