import type { JSX } from 'preact';
import { useLayoutEffect, useRef } from 'preact/hooks';
import { catalogue } from 'settings-client';

import type { Language } from '../i18n/language';
import { isIntroduction } from '../settings/catalogue';
import { whoOf } from '../settings/changedBy';
import { nameOfSetting, wordsFor } from '../settings/format';
import type { Message } from '../state/messages';
import { usePage } from './context';
import { showAgain } from './Modal';

function wordsOf({ key, value, event }: Message, language: Language): string {
    const { kind } = catalogue[key];
    const isSwitch = kind === 'switch' && !isIntroduction(key) && (value === 'true' || value === 'false');
    const change = isSwitch ? (value === 'true' ? 'turnedOn' : 'turnedOff') : 'setTo';
    // A value that changes at its owner without an event is the device's.
    const who = event === null ? language.t('by.device') : whoOf(event, language);
    return language.t(change, {
        name: nameOfSetting(key, language),
        value: wordsFor(key, value, language),
        who,
    });
}

/** The messages of the page, one after the other, in a corner where no row is. */
export function Messages(): JSX.Element {
    const { state, language } = usePage();
    const [message] = state.messages;
    const place = useRef<HTMLParagraphElement>(null);
    // In front of an open panel, too: what was shown last is in front.
    useLayoutEffect(() => {
        if (place.current !== null) {
            showAgain(place.current);
        }
    }, [message]);
    return (
        <p class="message" role="status" popover="manual" ref={place}>
            {message !== undefined && wordsOf(message, language)}
        </p>
    );
}
