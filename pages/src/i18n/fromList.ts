import { en, type Translation } from './en';

/** A translation from its texts, which have the order of the English ones. The build makes such lists. */
export function fromList(texts: readonly string[]): Translation {
    let next = 0;
    const groups = Object.entries<object>({ ...en }).map(([group, members]) => [
        group,
        Object.fromEntries(Object.keys(members).map((key) => [key, texts[next++]])),
    ]);
    return Object.fromEntries(groups) as Translation;
}
