const hiragana = /[\u3041-\u3096]/g;
const toKatakana = (letter: string) => String.fromCharCode(letter.charCodeAt(0) + 0x60);

/**
 * A text as search compares it: without accents, case, punctuation and differences of width, kana in one kind, Arabic without
 * the article.
 */
export function plain(text: string): string {
    return text
        .normalize('NFKD')
        .replace(/\p{M}/gu, '')
        .toLowerCase()
        .replaceAll('ß', 'ss')
        .replace(hiragana, toKatakana)
        .replaceAll('ة', 'ه')
        .replace(/[\p{P}\p{S}\s]+/gu, ' ')
        .trim()
        .replace(/(^| )ال(?=\S{3})/g, '$1');
}
