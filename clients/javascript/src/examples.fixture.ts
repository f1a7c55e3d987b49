/** A frame of an example, which a client at this listener sends or receives. */
export interface Step {
    readonly at: 'socket' | 'page' | 'device';
    readonly sent?: Readonly<Record<string, unknown>>;
    readonly sentText?: string;
    readonly received?: Readonly<Record<string, unknown>>;
    /** The name of its schema in docs/schemas. */
    readonly schema?: string;
}

interface Example {
    readonly title: string;
    readonly steps: readonly Step[];
}

const files = import.meta.glob<Example>('../../../docs/examples/*.json', { eager: true, import: 'default' });

/** The examples of the documents by name; tests of the host play them against a host. */
export const examples: ReadonlyMap<string, readonly Step[]> = new Map(
    Object.entries(files).map(([path, { steps }]) => [path.replace(/^.*\/|\.json$/g, ''), steps]),
);

export const everyStep: readonly Step[] = [...examples.values()].flat();
