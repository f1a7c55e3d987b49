import { connectionOf, parseObject, type Trace } from './messages';

/** JSON lines that play the messages again: a title, then one step a message. Frames stay as they were, to the last digit. */
export function scenarioOf(messages: readonly Trace[]): string {
    const start = messages[0]?.timestamp ?? 0;
    let time = 0;
    const steps = messages.map((message) => {
        // The clock of the host may have been set back.
        time = Math.max(time, message.timestamp - start);
        const { direction, text } = message;
        const isFrame = parseObject(text) !== null;
        const member = (direction === 'in' ? 'sent' : 'received') + (isFrame ? '' : 'Text');
        const at = JSON.stringify(connectionOf(message));
        return `{"time": ${time}, "at": ${at}, "${member}": ${isFrame ? text : JSON.stringify(text)}}\n`;
    });
    const title = `Copied from the simulated TV, ${new Date(start).toISOString()}`;
    return `{"scenario": 1, "title": "${title}"}\n${steps.join('')}`;
}
