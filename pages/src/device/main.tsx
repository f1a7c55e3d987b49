import { render } from 'preact';
import { Connection } from 'settings-client';

import { hideKey, hostAddress } from '../address';
import { ignoreRepeatedActions } from '../focus/keys';
import { DevicePage } from './DevicePage';
import { moveByArrows } from './arrows';
import { DeviceStore } from './store';

import '../styles';
import './device.css';

let drawing = false;

const store = new DeviceStore((text) => connection.send(text), drawSoon);

const connection = new Connection(hostAddress(), '/device', 'device.v1', {
    opened: () => {
        store.opened();
    },
    received: (text) => {
        store.session.received(text);
    },
    closed: () => {
        store.closed();
    },
    unauthorized: () => {
        store.show({ connection: 'unauthorized' });
    },
});

/** Draws once before the next frame of the browser. */
function drawSoon(): void {
    if (!drawing) {
        drawing = true;
        requestAnimationFrame(draw);
    }
}

function draw(): void {
    drawing = false;
    const root = document.getElementById('device');
    if (root !== null) {
        render(
            <DevicePage
                store={store}
                onRetry={() => {
                    connection.retryNow();
                }}
            />,
            root,
        );
    }
}

hideKey();
ignoreRepeatedActions();
moveByArrows();
draw();
connection.start();
addEventListener('online', () => {
    connection.retryNow();
});
addEventListener('hashchange', () => {
    store.readAddress();
});
