import { render } from 'preact';

import { App } from './App';
import { isSetting } from './settings/format';
import { actOncePerPress } from './focus/keys';
import './page.css';
import { Store } from './state/store';
import './theme.css';
import { hideKey } from './wire/address';
import { Connection } from './wire/connection';

hideKey();
actOncePerPress();

const store = new Store(
    (frame) => connection.send(frame),
    () => {
        connection.renew();
    },
    isSetting,
);
const connection = new Connection('/settings', 'settings.v1', {
    opened: () => {
        store.opened();
    },
    received: (text) => {
        store.received(text);
    },
    closed: () => {
        store.closed();
    },
    lockedOut: () => {
        store.lockedOut();
    },
});
connection.start();

const retry = () => {
    connection.retryNow();
};
window.addEventListener('online', retry);

const place = document.getElementById('app');
if (place !== null) {
    render(<App store={store} onRetry={retry} />, place);
}
