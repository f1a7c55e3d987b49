import type { JSX, RefObject } from 'preact';
import type { SettingKey } from 'settings-client';

import { nameOfSetting } from '../settings/format';
import { usePage } from './context';
import { Field } from './Field';
import type { RowProps } from './RowProps';

interface Props extends RowProps {
    readonly texts: readonly string[];
    readonly first: RefObject<HTMLInputElement>;
    readonly onEdit: (index: number, text: string) => void;
}

/** The fields of an editor: one, or two for a pair. */
export function Fields({ setting, parts, texts, first, onEdit }: Props): JSX.Element {
    const { language } = usePage();
    const name = nameOfSetting(setting, language);
    return (
        <>
            {texts.map((text, index) => (
                <Field
                    key={index}
                    input={index === 0 ? first : null}
                    row={index === 0 ? setting : `${setting}-${index}`}
                    label={parts === undefined || texts.length === 1 ? name : `${name}: ${parts[index]}`}
                    text={text}
                    onEdit={(edited) => {
                        onEdit(index, edited);
                    }}
                />
            ))}
        </>
    );
}

/** What ends an editor. */
export function Buttons({ setting }: { readonly setting: SettingKey }): JSX.Element {
    const { language } = usePage();
    return (
        <div class="buttons" data-row={`${setting}-buttons`}>
            <button type="submit" class="button primary">
                {language.t('edit.save')}
            </button>
            <button type="reset" class="button">
                {language.t('edit.cancel')}
            </button>
        </div>
    );
}
