import type { Message } from './messageLog';
import { connectionOf, parseObject } from './messages';

/**
 * What "settingsctl replay" can play: no answer to a request that is no longer listed, and nothing that asks for the key of
 * the pages, since the host shows nobody the answer.
 */
function playable(messages: readonly Message[]): readonly Message[] {
    const open = new Set<string>();
    return messages.filter((message) => {
        if (message.kind === 'page') {
            return false;
        }
        if (message.direction === 'in') {
            open.add(connectionOf(message));
        }
        return message.listener === 'all' || open.has(connectionOf(message));
    });
}

/** JSON lines that play the messages again: a title, then one step a message. Frames stay as they were, to the last digit. */
export function scenarioOf(messages: readonly Message[]): string {
    const start = messages[0]?.timestamp ?? 0;
    let time = 0;
    const steps = playable(messages).map((message) => {
        // The clock of the host may have been set back.
        time = Math.max(time, message.timestamp - start);
        const { direction, text } = message;
        const isFrame = parseObject(text) !== null;
        const member = (direction === 'in' ? 'sent' : 'received') + (isFrame ? '' : 'Text');
        const at = JSON.stringify(connectionOf(message));
        const shown = isFrame ? text.replace(/[\r\n]/g, ' ') : JSON.stringify(text);
        return `{"time": ${time}, "at": ${at}, "${member}": ${shown}}\n`;
    });
    const title = `Copied from the simulated TV, ${new Date(start).toISOString()}`;
    return `{"scenario": 1, "title": "${title}"}\n${steps.join('')}`;
}
