import { defineConfig } from 'vitest/config';

export default defineConfig({
    test: {
        include: ['browser-tests/**/*.browser.ts'],
        globalSetup: 'browser-tests/chromium.ts',
        testTimeout: 20_000,
        hookTimeout: 20_000,
        pool: 'forks',
        maxWorkers: 2,
        minWorkers: 1,
        isolate: false,
    },
});
