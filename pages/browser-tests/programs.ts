import { resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const repository = fileURLToPath(new URL('../..', import.meta.url));

function program(variable: string, fallback: string): string {
    return resolve(repository, process.env[variable] ?? fallback);
}

/** The programs under test; a CMake build tree names its own by these variables. */
export const settingsHost = program('SETTINGS_HOST', 'build/release/bin/settings-host');
export const settingsctl = program('SETTINGSCTL', 'build/release/bin/settingsctl');
/** Without the windows and menus of the whole browser, which take a third of the time and nobody sees. */
export const chromium = program('CHROMIUM', '/usr/bin/chromium-headless-shell');
export const builtPages = program('PAGES', 'pages/dist');
/** The folder for pictures of failed comparisons. */
export const failures = resolve(repository, 'build/pages');

/** The npm package, who uses it, and what compiles that. */
export const settingsClient = resolve(repository, 'clients/javascript');
export const examples = resolve(repository, 'examples');
export const consumer = resolve(repository, 'pages/browser-tests/package.consumer.ts');
export const tools = resolve(repository, 'pages/node_modules/.bin');
