import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Modal } from '../components/Modal';
import type { TextKey } from '../i18n/en';
import { isTranslated, languageFor, nameOfLocale, type Language } from '../i18n/language';

interface Props {
    /** The locale that would be the primary one. */
    readonly locale: string;
    readonly onAnswer: (isYes: boolean) => void;
}

/** Asks in both languages before the pages change theirs. */
export function LanguageQuestion({ locale, onAnswer }: Props): JSX.Element {
    const { language } = usePage();
    const next = languageFor(locale);
    const both = [language, next] as const;
    const label = (key: TextKey) => both.map(({ t }) => t(key)).join(' · ');
    return (
        <Modal
            title={questionIn(language, next)}
            onClose={() => {
                onAnswer(false);
            }}
        >
            <p lang={next.code} dir={next.direction} class="question">
                {questionIn(next, next)}
            </p>
            {!isTranslated(locale) &&
                both.map(({ t, code, direction }) => (
                    <p key={code} lang={code} dir={direction} class="about">
                        {t('locale.untranslated', { name: nameOfLocale(locale, code) })}
                    </p>
                ))}
            <div class="buttons" data-row="answer">
                {([true, false] as const).map((isYes) => (
                    <button
                        key={String(isYes)}
                        type="button"
                        class={isYes ? 'button primary' : 'button'}
                        onClick={() => {
                            onAnswer(isYes);
                        }}
                    >
                        <bdi>{label(isYes ? 'locale.change' : 'edit.cancel')}</bdi>
                    </button>
                ))}
            </div>
        </Modal>
    );
}

function questionIn({ t, code }: Language, next: Language): string {
    return t('locale.question', { language: nameOfLocale(next.code, code) });
}
