import { expect, test } from 'vitest';

import { commandOf, forms } from './commands';

test('a form becomes its command; locales may be separated by commas and blanks', () => {
    const commands = forms.map((form) => commandOf(form, [' fr-FR, en-US\nde-DE ,'.trim(), 'Den']));
    expect(commands).toEqual([
        { command: 'locale', value: 'fr-FR, en-US\nde-DE ,' },
        { command: 'locales', values: ['fr-FR', 'en-US', 'de-DE'] },
        { command: 'timezone', value: 'fr-FR, en-US\nde-DE ,' },
        { command: 'setting', key: 'fr-FR, en-US\nde-DE ,', value: 'Den' },
    ]);
    expect(forms[1] && commandOf(forms[1], [''])).toEqual({ command: 'locales', values: [] });
});
