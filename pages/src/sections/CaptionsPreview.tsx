import type { JSX } from 'preact';

import { ChoiceRow } from '../components/ChoiceRow';
import { usePage } from '../components/context';
import type { RowProps } from '../components/RowProps';

interface Look {
    readonly captionsFontSize?: string | undefined;
    readonly captionsStyles?: string | undefined;
}

export function CaptionsPreview(): JSX.Element {
    return <Preview look={{}} />;
}

/** What captions look like; `look` comes before what is set. */
function Preview({ look }: { readonly look: Look }): JSX.Element {
    const { state, language } = usePage();
    const { captionsFontSize, captionsStyles } = { ...state.values, ...look };
    return (
        <figure class="preview">
            <figcaption>{language.t('preview.title')}</figcaption>
            <div class="scene">
                <p class="sample" data-size={captionsFontSize} data-style={captionsStyles}>
                    {language.t('preview.text')}
                </p>
            </div>
        </figure>
    );
}

/** The size or the colours of captions: each choice as it looks, and the preview beside it. */
export function CaptionsRow(props: RowProps): JSX.Element {
    const attribute = props.setting === 'captionsStyles' ? 'data-style' : 'data-size';
    return (
        <ChoiceRow
            {...props}
            draw={(words, choice) => (
                <span class="sample" {...{ [attribute]: choice }}>
                    {words}
                </span>
            )}
            preview={(choice) => <Preview look={{ [props.setting]: choice }} />}
        />
    );
}
