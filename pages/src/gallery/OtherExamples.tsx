import type { JSX } from 'preact';

import { Banner } from '../components/Banner';
import { EditRow } from '../components/EditRow';
import { Explanation } from '../components/Explanation';
import { IntroductionRow } from '../components/IntroductionRow';
import { Messages } from '../components/Messages';
import { RadioList } from '../components/RadioList';
import { Icon, iconNames } from '../icons';
import { ChangeRow } from '../sections/ChangeRow';
import { Example } from './Example';

const nothing = () => undefined;
const event = {
    key: 'deviceName',
    from: 'TV',
    to: 'Den',
    origin: 'page',
    client: 'phone',
    timestamp: Date.now(),
    sequence: 1,
} as const;
const sizes = ['Small', 'Medium', 'Large'].map((words) => ({ value: words, words }));

/** Everything that is no row. */
export function OtherExamples(): JSX.Element {
    return (
        <>
            <Example
                title="a change, an introduction that was seen"
                state={{ values: { handsFreeAlwaysOnDiscovered: 'true' } }}
            >
                <ChangeRow change={event} showsStatus={false} onUndo={nothing} />
                <IntroductionRow setting="handsFreeAlwaysOnDiscovered" />
                <IntroductionRow setting="pttAlwaysOnDiscovered" />
            </Example>
            <Example title="an editor" state={{ editor: 'companionDevice' }}>
                <EditRow setting="companionDevice" parts={['Name', 'Kind']} />
            </Example>
            <Example
                title="an editor in conflict"
                state={{ editor: 'deviceName' }}
                draft={{ parts: ['Den'], known: 'TV' }}
            >
                <EditRow setting="deviceName" />
            </Example>
            <Example title="choices">
                <RadioList label="Text size" options={sizes} chosen="Medium" onChoose={nothing} />
            </Example>
            <Example title="an explanation">
                <div class="about">
                    <Explanation setting="captionsEnabled" about="Text for what is spoken." />
                </div>
            </Example>
            <Example title="a message" state={{ messages: [{ key: 'deviceName', value: 'Den', event }] }}>
                <Messages />
            </Example>
            {(['lost', 'unauthorized', 'unsupported'] as const).map((connection) => (
                <Example key={connection} title={`a banner: ${connection}`} state={{ connection }}>
                    <Banner />
                </Example>
            ))}
            <Example title="icons">
                {iconNames.map((name) => (
                    <Icon key={name} name={name} />
                ))}
            </Example>
        </>
    );
}
