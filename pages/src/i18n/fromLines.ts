import { en, type Translation } from './en';

/**
 * A translation from its texts, which have the order of the English ones. The build makes such lists. Each group of texts is
 * made when it is used: of most languages none is.
 */
export function fromList(texts: readonly string[]): Translation {
    let next = 0;
    const translation = {};
    for (const [group, members] of Object.entries<object>({ ...en })) {
        const keys = Object.keys(members);
        const start = next;
        next += keys.length;
        Object.defineProperty(translation, group, {
            enumerable: true,
            get: () => Object.fromEntries(keys.map((key, index) => [key, texts[start + index]])),
        });
    }
    return translation as Translation;
}
