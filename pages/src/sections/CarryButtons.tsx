import type { JSX } from 'preact';

import { usePage } from '../components/context';
import { Icon } from '../icons';
import type { Locales } from './useLocales';

/** Move the language that was picked up, for mouse and touch. */
export function CarryButtons({ list }: { readonly list: Locales }): JSX.Element {
    const { t } = usePage().language;
    return (
        <>
            {([-1, 1] as const).map((by) => (
                <button
                    key={by}
                    type="button"
                    class="tool"
                    tabIndex={-1}
                    aria-label={t(by < 0 ? 'locale.up' : 'locale.down')}
                    onClick={() => {
                        list.carry(by);
                    }}
                >
                    <Icon name={by < 0 ? 'up' : 'down'} />
                </button>
            ))}
        </>
    );
}
