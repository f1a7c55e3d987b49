import type { JSX } from 'preact';

import { nameOfSetting, shortened, usePage } from '../settings/format';
import type { MessageKey } from '../i18n/en';
import { RowStatus } from './RowStatus';

interface Props {
    readonly setting: string;
    readonly choices: readonly MessageKey[];
}

/** A setting that is one of a few words. A value outside of them is shown too, and stays until another is chosen. */
export function ChoiceRow({ setting, choices }: Props): JSX.Element {
    const { store, state, language } = usePage();
    const value = state.values?.[setting] ?? '';
    const all: readonly string[] =
        value === '' || choices.some((choice) => choice === value) ? choices : [...choices, value];
    const words = (choice: string) =>
        choices.some((known) => known === choice)
            ? language.t(choice as MessageKey)
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
