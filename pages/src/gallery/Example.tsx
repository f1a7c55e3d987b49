import type { ComponentChildren, JSX } from 'preact';
import type { Client } from 'settings-client';

import { Page } from '../components/context';
import { languageFor } from '../i18n/language';
import { Store, type Draft, type State } from '../state/store';

/** A client that never answers: an example stays in its state. */
function connect(): Client {
    const never = () => new Promise(() => undefined);
    return new Proxy(Object.create(null) as Client, { get: () => never });
}

const values = {
    deviceName: 'Living room',
    friendlyName: 'Big screen',
    companionDevice: '["Pocket phone","Phone"]',
    captionsEnabled: 'true',
    captionsFontSize: 'FONT_MEDIUM',
    captionsStyles: 'STYLE_WHITE_ON_BLACK',
    handsFreeEnabled: 'true',
    orliaLocale: '["en-US","fr-FR"]',
    timezone: 'Asia/Tokyo',
};

interface Props {
    readonly title: string;
    readonly state?: Partial<State>;
    readonly draft?: Draft;
    readonly children: ComponentChildren;
}

/** A component in one state, as the settings page shows it. */
export function Example({ title, state = {}, draft, children }: Props): JSX.Element {
    const store = new Store(connect);
    store.state = { ...store.state, connection: 'online', values, ...state };
    if (draft !== undefined) {
        store.drafts.set('deviceName', draft);
    }
    return (
        <figure>
            <figcaption>{title}</figcaption>
            <Page.Provider value={{ store, state: store.state, language: languageFor('en'), goTo: () => undefined }}>
                {children}
            </Page.Provider>
        </figure>
    );
}
