import { useEffect, useState } from 'preact/hooks';

import type { State, Store } from './store';

/** The state of the store, drawn again whenever it changes. */
export function useStore(store: Store): State {
    const [state, setState] = useState(store.state);
    useEffect(() => {
        setState(store.state);
        return store.subscribe(() => {
            setState(store.state);
        });
    }, [store]);
    return state;
}
