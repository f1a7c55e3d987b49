const hiragana = /[\u3041-\u3096]/g;
const toKatakana = (letter: string) => String.fromCharCode(letter.charCodeAt(0) + 0x60);

/** A text without what people leave out when they type: capitals, accents, the kind of kana. */
export function plain(text: string): string {
    return text
        .normalize('NFKD')
        .replace(/\p{M}/gu, '')
        .replace(hiragana, toKatakana)
        .replaceAll('ة', 'ه')
        .replaceAll('ى', 'ي')
        .toLowerCase();
}

/** The words of a plain text; the Arabic article is no part of them. */
export function wordsOf(text: string): string[] {
    return plain(text)
        .replace(/['’ʼ]/g, '')
        .split(/[^\p{L}\p{N}]+/u)
        .filter(Boolean)
        .map((word) => word.replace(/^ال(?=...)/, ''));
}
