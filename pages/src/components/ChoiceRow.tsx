import type { ComponentChildren, JSX } from 'preact';
import { useState } from 'preact/hooks';

import { choicesOf } from '../settings/catalogue';
import { nameOfSetting, shortened, wordsFor } from '../settings/format';
import { usePage } from './context';
import { Explanation } from './Explanation';
import { Panel } from './Panel';
import { RadioList } from './RadioList';
import { ResetTool } from './ResetTool';
import { Row } from './Row';
import type { RowProps } from './RowProps';
import { RowStatus } from './RowStatus';
import { useDialog } from './useDialog';

interface Props extends RowProps {
    /** A choice as it looks; without this, in words. */
    readonly draw?: (words: string, choice: string) => ComponentChildren;
    /** What the choice that has the focus would look like, beside the choices. */
    readonly preview?: (choice: string) => ComponentChildren;
}

/** A setting with a few values. A value that the catalogue does not list is shown too, until another is chosen. */
export function ChoiceRow({ draw = (words) => words, preview, ...props }: Props): JSX.Element {
    const { store, state, language } = usePage();
    const { setting } = props;
    const panel = useDialog();
    const [focused, setFocused] = useState<string | undefined>();
    const name = nameOfSetting(setting, language);
    const value = state.values?.[setting] ?? '';
    const choices: readonly string[] = choicesOf(setting);
    const all = value === '' || choices.includes(value) ? choices : [...choices, value];
    const words = (choice: string) =>
        choices.includes(choice)
            ? wordsFor(setting, choice, language)
            : language.t('value.other', { value: shortened(choice) });
    const explanation = <Explanation {...props} />;
    return (
        <Row
            kind="opens"
            row={setting}
            name={name}
            value={draw(wordsFor(setting, value, language), value)}
            opensDialog
            tools={<ResetTool setting={setting} />}
            explanation={explanation}
            onUse={panel.open}
        >
            <RowStatus setting={setting} />
            {panel.isOpen && (
                <Panel title={name} explanation={preview?.(focused ?? value) ?? explanation} onClose={panel.close}>
                    <RadioList
                        label={name}
                        options={all.map((choice) => ({ value: choice, words: draw(words(choice), choice) }))}
                        chosen={value}
                        onFocus={setFocused}
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
