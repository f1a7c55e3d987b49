import { fileURLToPath } from 'node:url';

import '../clients/javascript/scripts/generate-catalogue.mjs';
import './scripts/generate-timezones.mjs';

/** For every configuration: the package `settings-client` is taken from its sources, so that it needs no build. */
export const settingsClient = {
    resolve: {
        alias: { 'settings-client': fileURLToPath(new URL('../clients/javascript/src/index.ts', import.meta.url)) },
    },
    server: { fs: { allow: ['..'] } },
};
