import type { JSX } from 'preact';

import { choicesOf } from '../settings/catalogue';
import { nameOfSetting, shortened, wordsFor } from '../settings/format';
import { usePage } from './context';
import type { RowProps } from './RowProps';
import { RowStatus } from './RowStatus';

/** A setting with a few values. A value that the catalogue does not list is shown too, until another is chosen. */
export function ChoiceRow({ setting }: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const value = state.values?.[setting] ?? '';
    const choices: readonly string[] = choicesOf(setting);
    const all = value === '' || choices.includes(value) ? choices : [...choices, value];
    const words = (choice: string) =>
        choices.includes(choice)
            ? wordsFor(setting, choice, language)
            : language.t('otherValue', { value: shortened(choice) });
    return (
        <div class="row" data-row={setting}>
            <div class="choices" role="radiogroup" aria-label={nameOfSetting(setting, language)}>
                <span class="name">{nameOfSetting(setting, language)}</span>
                {all.map((choice) => (
                    <button
                        key={choice}
                        type="button"
                        class="choice"
                        role="radio"
                        aria-checked={choice === value}
                        onClick={() => void store.set(setting, choice)}
                    >
                        <span aria-hidden="true">{choice === value ? '● ' : '○ '}</span>
                        {words(choice)}
                    </button>
                ))}
            </div>
            <RowStatus setting={setting} />
        </div>
    );
}
