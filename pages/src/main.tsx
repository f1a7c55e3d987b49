import { render } from 'preact';

import { App } from './App';
import { ignoreRepeatedActions } from './focus/keys';
import './page.css';
import { Store } from './state/store';
import './theme.css';
import { hideKey } from './wire/address';
import { Connection } from './wire/connection';

hideKey();
ignoreRepeatedActions();

const store = new Store(
    (frame) => connection.send(frame),
    () => {
        connection.renew();
    },
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
    unauthorized: () => {
        store.unauthorized();
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
