import { defineConfig } from 'vitest/config';

import { settingsClient } from '../settingsClient';

/** What to run: the tests, or the pictures or measurements of the documents. */
const kind = process.env['MAKE'] ?? 'browser';

export default defineConfig({
    ...settingsClient,
    test: {
        include: [`browser-tests/**/*.${kind}.ts`],
        globalSetup: 'browser-tests/chromium.ts',
        // For the slowest machine.
        testTimeout: 300_000,
        hookTimeout: 300_000,
        expect: { poll: { timeout: 60_000 } },
        pool: 'forks',
        // A test waits for the browser half of the time.
        maxWorkers: 3,
        // With fewer, vitest may end an idle worker together with the file that it was just given.
        minWorkers: 3,
        isolate: false,
    },
});
