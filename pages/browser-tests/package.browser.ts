import { execFile } from 'node:child_process';
import { copyFileSync, mkdirSync, mkdtempSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { promisify } from 'node:util';

import { afterAll, beforeAll, expect, test } from 'vitest';

import { hostOfFile } from './host';
import { consumer, examples, settingsClient, tools } from './programs';
import { hostIsAway, visit } from './visit';

// Vitest loses a worker that is blocked for a minute, as it would be on a busy machine.
const run = promisify(execFile);
const folder = mkdtempSync(join(tmpdir(), 'settings-client-'));
const installed = join(folder, 'node_modules/settings-client');
/** The example page beside the module of the tarball. */
const page = join(folder, 'page');

beforeAll(async () => {
    await run('npm', ['pack', '--silent', '--ignore-scripts', '--pack-destination', folder], {
        cwd: settingsClient,
    });
    const [tarball = ''] = readdirSync(folder).filter((name) => name.endsWith('.tgz'));
    writeFileSync(join(folder, 'package.json'), '{ "type": "module" }');
    await run('npm', ['install', '--silent', '--offline', join(folder, tarball)], { cwd: folder });
    mkdirSync(page);
    for (const file of readdirSync(join(examples, 'page'))) {
        copyFileSync(join(examples, 'page', file), join(page, file));
    }
    copyFileSync(join(installed, 'dist/settings-client.js'), join(page, 'settings-client.js'));
});
const host = hostOfFile(undefined, page);
afterAll(() => {
    rmSync(folder, { recursive: true });
});

test('the package has the module, its types, the licence and how to use it, and depends on nothing', () => {
    const files = readdirSync(installed, { recursive: true }).map(String).sort();
    expect(files.filter((file) => !file.endsWith('.d.ts'))).toEqual([
        'LICENSE',
        'README.md',
        'dist',
        'dist/settings-client.js',
        'package.json',
    ]);
    expect(readdirSync(join(folder, 'node_modules')).filter((name) => !name.startsWith('.'))).toEqual([
        'settings-client',
    ]);
});

test.each(['bundler', 'nodenext'])('a consumer compiles with the module resolution %s', async (resolution) => {
    copyFileSync(consumer, join(folder, 'consumer.ts'));
    const module = resolution === 'bundler' ? 'esnext' : resolution;
    const options = [
        '--strict',
        '--noEmit',
        '--skipDefaultLibCheck',
        '--target',
        'es2022',
        '--module',
        module,
        '--moduleResolution',
        resolution,
    ];
    expect(await compile(options)).toBe('');
});

/** What the compiler says about the consumer. */
async function compile(options: readonly string[]): Promise<string> {
    try {
        return (await run(join(tools, 'tsc'), [...options, 'consumer.ts'], { cwd: folder })).stdout;
    } catch (error) {
        return (error as { readonly stdout: string }).stdout;
    }
}

test('the example page shows, sets and follows a setting, also after the host was killed', async () => {
    await visit(
        host,
        async (tab) => {
            const field = tab.getByLabel('Device name');
            const result = tab.locator('#result');
            const save = async (text: string) => {
                await field.fill(text);
                await tab.getByRole('button').click();
            };
            await tab.getByText('online').waitFor();
            expect(await field.inputValue()).toBe('TV');
            await save('Den');
            await result.getByText('changed').waitFor();
            expect(await host.value('deviceName')).toBe('Den');
            await save('Den');
            await result.getByText('unchanged').waitFor();
            await host.control('set', 'deviceName', 'Attic');
            await result.getByText('Changed').waitFor();
            expect(await field.inputValue()).toBe('Attic');
            await host.kill();
            await tab.getByText('lost').waitFor();
            await host.resume();
            await tab.getByText('online').waitFor();
            await save('Hall');
            await result.getByText('changed').waitFor();
            expect(await host.control('history', 'deviceName').catch(() => 'by example page')).toContain(
                'example page',
            );
        },
        // The browser asks for an icon.
        { expected: new RegExp(`${hostIsAway.source}|status of 404`) },
    );
});
