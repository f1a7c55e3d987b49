import { execFile, spawn, type ChildProcess } from 'node:child_process';
import { once } from 'node:events';
import { mkdtemp, rm } from 'node:fs/promises';
import { connect } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';

import { afterAll, afterEach, beforeAll, beforeEach } from 'vitest';

import { builtPages, settingsctl, settingsHost } from './programs';

const readyPattern = /^ready: (http:\/\/\S+)/;

export interface CommandResult {
    readonly status: number;
    readonly output: string;
}

/** A real host with its own database in a temporary folder. */
export class Host {
    private process: ChildProcess | null = null;
    private address = new URL('http://127.0.0.1:0/');

    private folder = '';

    /** `pages` is the folder that it serves. */
    constructor(private readonly pages = builtPages) {}

    async start(): Promise<void> {
        this.folder = await mkdtemp(join(tmpdir(), 'settings-pages-'));
        this.address = new URL('http://127.0.0.1:0/');
        await this.resume();
    }

    /** The address of a page, with the key. */
    page(path: '/' | '/device' | '/gallery.html'): string {
        return new URL(path + this.address.search, this.address).href;
    }

    /** Starts the host again with the same database and port. */
    async resume(): Promise<void> {
        const child = spawn(
            settingsHost,
            [
                ...['--storage', this.database(), ...this.sockets(), '--pages', this.pages],
                ...['--listen', this.address.host, '--log-level', '2'],
            ],
            { stdio: ['ignore', 'pipe', 'pipe'] },
        );
        this.process = child;
        let log = '';
        child.stderr.on('data', (text: Buffer) => (log += text.toString()));
        for await (const line of createInterface(child.stdout)) {
            const address = readyPattern.exec(line)?.[1];
            if (address !== undefined) {
                this.address = new URL(address);
                child.stdout.resume();
                return;
            }
        }
        throw new Error(`the host ended before it was ready: ${log}`);
    }

    /** Ends the host as a power cut would. */
    async kill(): Promise<void> {
        const child = this.process;
        this.process = null;
        if (child !== null && child.exitCode === null && child.signalCode === null) {
            child.kill('SIGKILL');
            await once(child, 'exit');
        }
    }

    /** Suspends the host with its connections open, until `thaw`. */
    freeze(): void {
        this.process?.kill('SIGSTOP');
    }

    thaw(): void {
        this.process?.kill('SIGCONT');
    }

    /** The socket for clients of the settings. */
    socket(): string {
        return join(this.folder, 'settings.sock');
    }

    /** Sends frames as a client of the Unix socket, and waits until the host has handled them. */
    send(...frames: readonly object[]): Promise<void> {
        return new Promise((resolve, reject) => {
            const client = connect(this.socket());
            client.on('error', reject);
            client.end(frames.map((frame) => `${JSON.stringify(frame)}\n`).join(''));
            client.resume();
            client.on('close', () => {
                resolve();
            });
        });
    }

    /** Starts it again with a new database: open pages are no longer authorized. */
    async resumeAsNew(): Promise<void> {
        await this.kill();
        for (const part of ['', '-wal', '.backup.1', '.backup.2']) {
            await rm(this.database() + part, { force: true });
        }
        await this.resume();
    }

    async stop(): Promise<void> {
        await this.kill();
        await rm(this.folder, { recursive: true, force: true });
    }

    /** Runs settingsctl against this host. */
    settingsctl(...words: string[]): Promise<CommandResult> {
        return new Promise((resolve) => {
            execFile(settingsctl, [...this.sockets(), ...words], (error, output, complaint) => {
                resolve({ status: error === null ? 0 : Number(error.code), output: output + complaint });
            });
        });
    }

    /** Runs settingsctl and throws when it fails. */
    async control(...words: string[]): Promise<string> {
        const { status, output } = await this.settingsctl(...words);
        if (status !== 0) {
            throw new Error(`settingsctl ${words.join(' ')}: ${output}`);
        }
        return output;
    }

    async value(key: string): Promise<string> {
        return (await this.control('--value', 'get', key)).replace(/\n$/, '');
    }

    async setLocales(...locales: readonly string[]): Promise<void> {
        await this.control('set', 'orliaLocale', JSON.stringify(locales));
    }

    private database(): string {
        return join(this.folder, 'settings.db');
    }

    private sockets(): string[] {
        return ['--socket', this.socket(), '--device-socket', join(this.folder, 'device.sock')];
    }
}

/** A host for all tests of a file. */
export function hostOfFile(prepare?: (host: Host) => Promise<unknown>, pages = builtPages): Host {
    const host = new Host(pages);
    beforeAll(async () => {
        await host.start();
        await prepare?.(host);
    });
    afterAll(() => host.stop());
    return host;
}

/** A new host for each test of a file. */
export function hostOfEachTest(): Host {
    const host = new Host();
    beforeEach(() => host.start());
    afterEach(() => host.stop());
    return host;
}
