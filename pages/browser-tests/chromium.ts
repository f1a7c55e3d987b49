import { chromium } from 'playwright-core';
import type { TestProject } from 'vitest/node';

import { chromium as executablePath } from './programs';

declare module 'vitest' {
    interface ProvidedContext {
        browserAddress: string;
    }
}

const quiet = [
    '--no-first-run',
    '--disable-gpu',
    '--disable-quic',
    '--disable-sync',
    '--disable-background-networking',
    '--disable-component-update',
    '--force-color-profile=srgb',
    '--font-render-hinting=none',
    '--disable-lcd-text',
    // A page is left before code that is made faster pays.
    '--js-flags=--no-opt',
];

/** One browser for all test files. */
export default async function startBrowser(project: TestProject): Promise<() => Promise<void>> {
    const server = await chromium.launchServer({ executablePath, chromiumSandbox: false, args: quiet });
    project.provide('browserAddress', server.wsEndpoint());
    return () => server.close();
}
