import type { JSX } from 'preact';

interface Props {
    readonly name: string;
    readonly value: string;
    readonly about?: string;
}

/** Something to read. It takes the focus all the same, so that it can be scrolled to. */
export function ReadOnlyRow({ name, value, about }: Props): JSX.Element {
    const label = about === undefined ? `${name}: ${value}` : `${name}: ${value}. ${about}`;
    return (
        <div class="row" data-row={name}>
            <div class="control" tabIndex={0} role="group" aria-label={label}>
                <span class="name">{name}</span>
                <bdi class="value">{value}</bdi>
                {about !== undefined && <span class="about">{about}</span>}
            </div>
        </div>
    );
}
