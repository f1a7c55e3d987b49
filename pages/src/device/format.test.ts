import { describe, expect, test } from 'vitest';

import { pretty, summary, timeOfDay, visible } from './format';

describe('visible', () => {
    test('shows controls, direction marks, invisible characters and broken pairs as escapes', () => {
        expect(visible('a\u0000\n\t\u007f\u0085b')).toBe('a\\u0000\\u000a\\u0009\\u007f\\u0085b');
        expect(visible('\u202egnp\u2066\u2069\u200f\u200b\ufeff\u2028\u2029')).toBe(
            '\\u202egnp\\u2066\\u2069\\u200f\\u200b\\ufeff\\u2028\\u2029',
        );
        expect(visible('\ud800x\u{e0041}')).toBe('\\ud800x\\u{e0041}');
    });

    test('leaves words of every language alone', () => {
        const words = 'Salon – 居間 غرفة <b>&amp;</b> 🛋';
        expect(visible(words)).toBe(words);
    });
});

describe('pretty', () => {
    test('puts every member and element on its own line', () => {
        expect(pretty('{"type":7,"payload":{"settings":["a","b"]}}')).toBe(
            [
                '{',
                '  "type": 7,',
                '  "payload": {',
                '    "settings": [',
                '      "a",',
                '      "b"',
                '    ]',
                '  }',
                '}',
            ].join('\n'),
        );
    });

    test('keeps empty lists and objects on one line', () => {
        expect(pretty('{"a":[ ],"b":{}}')).toBe('{\n  "a": [],\n  "b": {}\n}');
    });

    test('keeps what a value would lose: large numbers, repeated members, order, escapes', () => {
        expect(pretty('{"2":12345678901234567890,"1":1.0,"1":"\\u0041\\/"}')).toBe(
            '{\n  "2": 12345678901234567890,\n  "1": 1.0,\n  "1": "\\u0041\\/"\n}',
        );
    });

    test('takes brackets, colons, commas and quotes within strings as text', () => {
        expect(pretty('["{a:[b],\\"c\\\\"]')).toBe('[\n  "{a:[b],\\"c\\\\"\n]');
    });

    test('shows text that is not JSON unchanged, with nothing hidden', () => {
        expect(pretty('{"a":1')).toBe('{"a":1');
        expect(pretty('hel\u202elo')).toBe('hel\\u202elo');
        expect(pretty('"\u202e"')).toBe('"\\u202e"');
        expect(pretty('')).toBe('');
    });

    test('does not grow without bounds with the depth', () => {
        const deep = '['.repeat(5000) + ']'.repeat(5000);
        expect(pretty(deep).length).toBeLessThan(5000 * 2 * 100);
    });
});

describe('summary', () => {
    test('is one line and at most as long as asked', () => {
        expect(summary('{"a":1}')).toBe('{"a":1}');
        expect(summary('a\nb')).toBe('a\\u000ab');
        expect(summary('x'.repeat(60_000))).toBe('x'.repeat(159) + '…');
        expect(summary('\u0000'.repeat(10), 20)).toHaveLength(20);
    });
});

test('the time of day has milliseconds', () => {
    expect(timeOfDay(new Date(2024, 0, 2, 3, 4, 5, 6).getTime())).toBe('03:04:05.006');
});
