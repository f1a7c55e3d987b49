/** A frame of an example, which a client at this listener sends or receives. */
export interface Step {
    readonly at: 'socket' | 'page' | 'device';
    readonly sent?: Readonly<Record<string, unknown>>;
    readonly sentText?: string;
    readonly received?: Readonly<Record<string, unknown>>;
    /** The name of its schema in docs/schemas. */
    readonly schema?: string;
}

const files = import.meta.glob<string>('../../../docs/examples/*.jsonl', {
    eager: true,
    query: '?raw',
    import: 'default',
});

/** The step in a line of a scenario, at the listener of its connection. */
function stepIn(line: string): Step {
    const step = JSON.parse(line) as Step;
    return { ...step, at: step.at.replace(/-.*/, '') as Step['at'] };
}

/** The examples of the documents by name; tests of the host play them against a host. */
export const examples: ReadonlyMap<string, readonly Step[]> = new Map(
    Object.entries(files).map(([path, text]) => [
        path.replace(/^.*\/|\.jsonl$/g, ''),
        text.trim().split('\n').slice(1).map(stepIn),
    ]),
);

export const everyStep: readonly Step[] = [...examples.values()].flat();
