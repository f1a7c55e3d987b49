import { render } from 'preact';
import { Connection } from 'settings-client';

import { hideKey, hostAddress } from '../address';
import { ignoreRepeatedActions } from '../focus/keys';
import { DevicePage, type ConnectionState } from './DevicePage';
import { moveByArrows } from './arrows';
import { DeviceSession } from './session';

import '../styles/tokens.css';
import '../styles/base.css';
import './device.css';

let connectionState: ConnectionState = 'connecting';
let drawing = false;

const session = new DeviceSession((text) => connection.send(text), drawSoon);

const connection = new Connection(hostAddress(), '/device', 'device.v1', {
    opened: () => {
        connectionState = 'connected';
        session.opened();
        drawSoon();
    },
    received: (text) => {
        session.received(text);
    },
    closed: () => {
        connectionState = 'lost';
        session.closed();
        drawSoon();
    },
    unauthorized: () => {
        connectionState = 'unauthorized';
        drawSoon();
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
    const root = document.getElementById('app');
    if (root !== null) {
        render(
            <DevicePage
                session={session}
                connection={connectionState}
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
