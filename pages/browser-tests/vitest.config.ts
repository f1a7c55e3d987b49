import { defineConfig } from 'vitest/config';

import '../scripts/generate-catalogue.mjs';

/** What to run: the tests, or what makes the pictures or the figures of the documents. */
const kind = process.env['MAKE'] ?? 'browser';

export default defineConfig({
    test: {
        include: [`browser-tests/**/*.${kind}.ts`],
        globalSetup: 'browser-tests/chromium.ts',
        // Long enough for the slowest machine: what must be quick says so itself.
        testTimeout: 300_000,
        hookTimeout: 300_000,
        expect: { poll: { timeout: 60_000 } },
        pool: 'forks',
        // Half of the time a test waits for the browser's next frame.
        maxWorkers: 3,
        // With fewer, a worker that is idle for a moment is ended together with the file that it was just given.
        minWorkers: 3,
        isolate: false,
    },
});
