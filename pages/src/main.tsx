import { render } from 'preact';
import { connect } from 'settings-client';

import { hideKey, hostAddress, pageName } from './address';
import { App } from './App';
import { ignoreRepeatedActions } from './focus/keys';
import { Store } from './state/store';
import './styles';

hideKey();
ignoreRepeatedActions();

const store = new Store((observer) => connect({ ...observer, name: pageName(), address: hostAddress() }));

window.addEventListener('online', () => {
    store.retryNow();
});

const place = document.getElementById('app');
if (place !== null) {
    render(<App store={store} />, place);
}
