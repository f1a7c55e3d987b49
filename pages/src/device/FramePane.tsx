import type { JSX } from 'preact';

import { isBack } from '../focus/keys';
import { CopyButton } from './CopyButton';
import type { Exchange } from './exchanges';
import { clientOf } from './filter';
import { pretty, timeOfDay, visible } from './format';
import type { Message } from './messageLog';
import type { DeviceStore } from './store';

interface Props {
    readonly exchange: Exchange;
    readonly store: DeviceStore;
}

/** The frames of an exchange: the request, beside it its answers. Back closes it. */
export function FramePane({ exchange: { first, answers, missing }, store }: Props): JSX.Element {
    const isRequest = first.direction === 'in';
    const close = () => {
        store.show({ showsFrame: false });
        document.querySelector<HTMLElement>('.device-list')?.focus();
    };
    return (
        <div
            class="device-detail"
            onKeyDown={(event) => {
                if (isBack(event.key)) {
                    event.preventDefault();
                    close();
                }
            }}
        >
            <div class="device-tools" data-row="frame tools">
                <p>
                    {first.kind} {isRequest ? 'from' : 'to'} {visible(clientOf(first))}, {timeOfDay(first.timestamp)}
                    {answers[0] && `, answered after ${answers[0].timestamp - first.timestamp} ms`}
                    {missing && `, ${missing}`}
                </p>
                <CopyButton
                    label="Copy frame"
                    what="the frame"
                    text={() => [first, ...answers].map(({ text }) => text).join('\n')}
                    store={store}
                />
                <button type="button" onClick={close}>
                    Close
                </button>
            </div>
            <div class="device-frames" data-row="frames">
                <Frames label={isRequest ? 'Request' : 'Frame'} messages={[first]} />
                {answers.length > 0 && <Frames label="Answer" messages={answers} />}
            </div>
        </div>
    );
}

function Frames({ label, messages }: { readonly label: string; readonly messages: readonly Message[] }): JSX.Element {
    return (
        <pre tabIndex={0} role="region" aria-label={label}>
            {messages.map(({ text }) => pretty(text)).join('\n')}
        </pre>
    );
}
