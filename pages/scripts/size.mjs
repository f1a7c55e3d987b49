// Says what the built pages weigh, and fails when that is more than a television should have to load.
import { readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { gzipSync } from 'node:zlib';

const limit = 40 * 1024;
const folder = process.env.PAGES ?? 'dist';

const weights = readdirSync(folder, { recursive: true, withFileTypes: true })
    .filter((entry) => entry.isFile())
    .map((entry) => join(entry.parentPath ?? entry.path, entry.name))
    .map((file) => [file, gzipSync(readFileSync(file), { level: 9 }).length]);
const total = weights.reduce((sum, [, weight]) => sum + weight, 0);
for (const [file, weight] of weights) {
    console.log(`${String(weight).padStart(7)}  ${file}`);
}
console.log(`${String(total).padStart(7)}  in all, gzip; at most ${limit}`);
process.exit(total > limit ? 1 : 0);
