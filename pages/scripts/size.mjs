// Prints what the built pages and the built package weigh by `gzip -9`, and fails when one of them is more than a television should have to load.
import { execFileSync } from 'node:child_process';
import { readdirSync } from 'node:fs';
import { join } from 'node:path';

const client = '../clients/javascript/dist';

function filesIn(folder) {
    const entries = readdirSync(folder, { recursive: true, withFileTypes: true });
    return entries.filter((entry) => entry.isFile()).map((entry) => join(entry.parentPath ?? entry.path, entry.name));
}

function weigh(name, files, limit) {
    const weights = files.map((file) => [file, execFileSync('gzip', ['-9cn', file]).length]);
    const total = weights.reduce((sum, [, weight]) => sum + weight, 0);
    for (const [file, weight] of [...weights, [`${name}, gzip; at most ${limit}`, total]]) {
        console.log(`${String(weight).padStart(7)}  ${file}`);
    }
    if (total > limit) {
        process.exitCode = 1;
    }
}

const pages = filesIn(process.env.PAGES ?? 'dist');
const timezones = pages.filter((file) => file.includes('/timezones/'));
weigh(
    'both pages',
    pages.filter((file) => !timezones.includes(file)),
    48 * 1024,
);
// The panel of time zones loads the one of its language.
for (const file of timezones.filter((name) => name.endsWith('.json'))) {
    weigh('time zones in a language', [file], 12 * 1024);
}
weigh(
    'settings-client',
    filesIn(client).filter((file) => file.endsWith('.js')),
    4 * 1024,
);
