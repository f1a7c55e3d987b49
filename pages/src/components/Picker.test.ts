import { describe, expect, it } from 'vitest';

import { matching } from './Picker';

describe('searching', () => {
    const options = [
        { value: 'America/Sao_Paulo', words: 'America/Sao Paulo (GMT-3)' },
        { value: 'Europe/Paris', words: 'Europe/Paris (GMT+1)' },
        { value: 'es-ES', words: 'español (España)' },
    ];
    it.each([
        ['', ['America/Sao_Paulo', 'Europe/Paris', 'es-ES']],
        ['sao paulo', ['America/Sao_Paulo']],
        ['PARIS europe', ['Europe/Paris']],
        ['espana', ['es-ES']],
        ['gmt', ['America/Sao_Paulo', 'Europe/Paris']],
        ['nowhere', []],
    ])('%s', (typed, found) => {
        expect(matching(options, typed).map(({ value }) => value)).toEqual(found);
    });
});
