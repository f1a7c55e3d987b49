/** A text as search compares it: without accents, case, punctuation and differences of width. */
export function plain(text: string): string {
    return text
        .normalize('NFKD')
        .replace(/\p{M}/gu, '')
        .toLowerCase()
        .replaceAll('ß', 'ss')
        .replace(/[\p{P}\p{S}\s]+/gu, ' ')
        .trim();
}
