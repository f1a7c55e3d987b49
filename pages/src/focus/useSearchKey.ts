import { useEffect } from 'preact/hooks';

import { isSearch } from './keys';

/** Calls `onSearch` when a search key is pressed. */
export function useSearchKey(onSearch: () => void): void {
    useEffect(() => {
        const handleKey = (event: KeyboardEvent) => {
            if (isSearch(event.key)) {
                event.preventDefault();
                onSearch();
            }
        };
        document.addEventListener('keydown', handleKey);
        return () => {
            document.removeEventListener('keydown', handleKey);
        };
    });
}
