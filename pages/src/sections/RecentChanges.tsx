import type { JSX } from 'preact';
import { useEffect, useState } from 'preact/hooks';

import { usePage } from '../components/context';
import { ReadOnlyRow } from '../components/ReadOnlyRow';
import { ChangeRow } from './ChangeRow';

/** How many changes are shown. */
const shownChanges = 30;

/** The newest changes, by whomever, each of which can be undone. */
export function RecentChanges(): JSX.Element {
    const { store, state, language } = usePage();
    /** The change that was undone last: its row shows the result. */
    const [undone, setUndone] = useState<number | null>(null);
    useEffect(() => {
        // Another client may have logged out, of which no event tells.
        void store.reloadChanges();
    }, [store]);
    const changes = state.changes?.slice(0, shownChanges) ?? [];
    if (changes.length === 0) {
        return <ReadOnlyRow row="no-changes" name={language.t('changes.none')} value="" />;
    }
    return (
        <>
            {changes.map((change) => (
                <ChangeRow
                    key={change.sequence}
                    change={change}
                    showsStatus={change.sequence === undone}
                    onUndo={() => {
                        setUndone(change.sequence);
                        void store.set(change.key, change.from);
                    }}
                />
            ))}
        </>
    );
}
