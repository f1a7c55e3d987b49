import type { JSX } from 'preact';

import { choicesOf } from '../settings/catalogue';
import { nameOfSetting, shortened, wordsFor } from '../settings/format';
import { usePage } from './context';
import { Explanation } from './Explanation';
import { Panel } from './Panel';
import { RadioList } from './RadioList';
import { Row } from './Row';
import type { RowProps } from './RowProps';
import { RowStatus } from './RowStatus';
import { useDialog } from './useDialog';

/** A setting with a few values. A value that the catalogue does not list is shown too, until another is chosen. */
export function ChoiceRow(props: RowProps): JSX.Element {
    const { store, state, language } = usePage();
    const { setting } = props;
    const panel = useDialog();
    const name = nameOfSetting(setting, language);
    const value = state.values?.[setting] ?? '';
    const choices: readonly string[] = choicesOf(setting);
    const all = value === '' || choices.includes(value) ? choices : [...choices, value];
    const words = (choice: string) =>
        choices.includes(choice)
            ? wordsFor(setting, choice, language)
            : language.t('otherValue', { value: shortened(choice) });
    const explanation = <Explanation {...props} />;
    return (
        <Row
            kind="opens"
            row={setting}
            name={name}
            value={wordsFor(setting, value, language)}
            opensDialog
            explanation={explanation}
            onUse={panel.open}
        >
            <RowStatus setting={setting} />
            {panel.isOpen && (
                <Panel title={name} explanation={explanation} onClose={panel.close}>
                    <RadioList
                        label={name}
                        options={all.map((choice) => ({ value: choice, words: words(choice) }))}
                        chosen={value}
                        onChoose={(choice) => {
                            panel.close();
                            void store.set(setting, choice);
                        }}
                    />
                </Panel>
            )}
        </Row>
    );
}
