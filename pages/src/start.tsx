import { render } from 'preact';
import { connect } from 'settings-client';

import { hideKey, hostAddress, pageName } from './address';
import { App } from './App';
import { ignoreRepeatedActions } from './focus/keys';
import { Store } from './state/store';
import './styles';

/** How long the page waits for the values before it says that it loads them, in milliseconds. */
const patience = 250;

/** Starts the settings page in `root`. */
export function start(root: HTMLElement): void {
    hideKey();
    ignoreRepeatedActions();

    const store = new Store((observer) => connect({ ...observer, name: pageName(), address: hostAddress() }));

    window.addEventListener('online', () => {
        store.retryNow();
    });

    // The first thing to be drawn is the settings, unless the host takes its time.
    const timer = setTimeout(draw, patience);
    const stop = store.subscribe(() => {
        stop();
        clearTimeout(timer);
        // After the status, which comes with the values.
        queueMicrotask(draw);
    });

    function draw(): void {
        stop();
        render(<App store={store} />, root);
    }
}
