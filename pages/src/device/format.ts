/** Control characters, direction marks, other invisible characters, line separators and halves of surrogate pairs. */
const invisible = /[\p{Cc}\p{Cf}\p{Cs}\p{Zl}\p{Zp}]/gu;
const jsonTokens = /"(?:[^"\\]|\\.)*"|[{}[\],:]|[^\s{}[\],:"]+/g;
/** Deeper than the host accepts frames. Without a limit, indenting a long row of brackets would fill the memory. */
const maxIndent = 34;

function escaped(character: string): string {
    const code = character.codePointAt(0) ?? 0;
    return code > 0xffff ? `\\u{${code.toString(16)}}` : `\\u${code.toString(16).padStart(4, '0')}`;
}

/** `text` with invisible and reordering characters escaped. */
export function visible(text: string): string {
    return text.replace(invisible, escaped);
}

function newLine(depth: number): string {
    return '\n' + '  '.repeat(Math.min(depth, maxIndent));
}

/**
 * JSON indented over several lines, other text unchanged. Works on the text, not on the value, so that numbers, escapes,
 * repeated members and their order stay as they were sent.
 */
export function pretty(text: string): string {
    try {
        JSON.parse(text);
    } catch {
        return visible(text);
    }
    let depth = 0;
    let result = '';
    let previous = '';
    for (const token of text.match(jsonTokens) ?? []) {
        const opened = previous === '{' || previous === '[';
        if (token === '}' || token === ']') {
            depth -= 1;
            result += opened ? '' : newLine(depth);
        } else if (opened || previous === ',') {
            result += newLine(depth);
        }
        result += token === ':' ? ': ' : visible(token);
        depth += token === '{' || token === '[' ? 1 : 0;
        previous = token;
    }
    return result;
}

/** One line of at most `length` characters. */
export function summary(text: string, length = 160): string {
    const line = visible(text.slice(0, length));
    return text.length > length || line.length > length ? line.slice(0, length - 1) + '…' : line;
}

const clock = new Intl.DateTimeFormat('en-GB', { timeStyle: 'medium' });

/** The local time of day, with milliseconds. */
export function timeOfDay(timestamp: number): string {
    return `${clock.format(timestamp)}.${String(timestamp % 1000).padStart(3, '0')}`;
}
