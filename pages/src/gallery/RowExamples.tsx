import type { JSX } from 'preact';

import { ChoiceRow } from '../components/ChoiceRow';
import { EditRow } from '../components/EditRow';
import { ReadOnlySetting } from '../components/ReadOnlyRow';
import { Row } from '../components/Row';
import { SwitchRow } from '../components/SwitchRow';
import { Tool } from '../components/Tool';
import type { RowStatus } from '../state/store';
import { Example } from './Example';

const statuses: readonly RowStatus[] = [
    { kind: 'saving' },
    { kind: 'accepted' },
    { kind: 'unchanged' },
    { kind: 'default' },
    { kind: 'refused', reason: 'not-stored', to: 'Den' },
    { kind: 'refused', reason: 'too-long', to: 'Den' },
];

const nothing = () => undefined;

/** The rows of every kind and with every status. */
export function RowExamples(): JSX.Element {
    return (
        <>
            <Example title="opens">
                <EditRow setting="deviceName" />
                <ChoiceRow setting="captionsFontSize" />
            </Example>
            <Example title="switches: on, off">
                <SwitchRow setting="handsFreeEnabled" />
                <SwitchRow setting="pttAlwaysOnEnabled" />
            </Example>
            <Example title="shows">
                <ReadOnlySetting setting="captionsEnabled" />
            </Example>
            <Example title="acts, destroys">
                <Row kind="acts" row="act" name="Open the assistant’s settings" icon="external" onUse={nothing} />
                <Row kind="acts" row="destroy" name="Log out" icon="exit" isDestructive onUse={nothing} />
            </Example>
            <Example title="with tools">
                <Row
                    kind="opens"
                    row="tools"
                    name="Time zone"
                    value="Tokyo"
                    icon="language"
                    tools={<Tool tool="undo" words="Undo" onUse={nothing} />}
                    onUse={nothing}
                />
            </Example>
            <Example title="a long name and a long value" state={{ values: { friendlyName: 'Bedroom '.repeat(12) } }}>
                <EditRow setting="friendlyName" />
                <SwitchRow setting="pttAlwaysOnDiscovered" />
            </Example>
            {statuses.map((status, number) => (
                <Example key={number} title={status.kind} state={{ rows: { deviceName: status } }}>
                    <EditRow setting="deviceName" />
                </Example>
            ))}
            <Example title="draft" draft={{ parts: ['Den'], known: 'Living room' }}>
                <EditRow setting="deviceName" />
            </Example>
        </>
    );
}
