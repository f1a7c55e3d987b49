import type { JSX } from 'preact';

import { usePage } from '../components/context';

export function CaptionsPreview(): JSX.Element {
    const { state, language } = usePage();
    return (
        <figure class="preview">
            <figcaption>{language.t('preview')}</figcaption>
            <div class="scene">
                <p data-size={state.values?.['captionsFontSize']} data-style={state.values?.['captionsStyles']}>
                    {language.t('preview.text')}
                </p>
            </div>
        </figure>
    );
}
