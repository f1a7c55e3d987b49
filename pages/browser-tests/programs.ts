import { resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const repository = fileURLToPath(new URL('../..', import.meta.url));

function program(variable: string, fallback: string): string {
    return resolve(repository, process.env[variable] ?? fallback);
}

/** What the tests run; a CMake build tree names its own programs by these variables. */
export const settingsHost = program('SETTINGS_HOST', 'build/release/bin/settings-host');
export const settingsctl = program('SETTINGSCTL', 'build/release/bin/settingsctl');
export const chromium = program('CHROMIUM', '/usr/bin/chromium');
export const builtPages = program('PAGES', 'pages/dist');
/** Where pictures of failed comparisons go. */
export const failures = resolve(repository, 'build/pages');
