import { readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';

import '../clients/javascript/scripts/generate-catalogue.mjs';
import './scripts/generate-timezones.mjs';

const packageFile = new URL('../clients/javascript/package.json', import.meta.url);
const { version } = JSON.parse(readFileSync(packageFile, 'utf8')) as { readonly version: string };

/** For every configuration: the version, which the package has, and the package `settings-client` is taken from its sources, so that it needs no build. */
export const settingsClient = {
    define: { PAGES_VERSION: JSON.stringify(version) },
    resolve: {
        alias: { 'settings-client': fileURLToPath(new URL('../clients/javascript/src/index.ts', import.meta.url)) },
    },
    server: { fs: { allow: ['..'] } },
};
