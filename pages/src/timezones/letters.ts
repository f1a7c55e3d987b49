import type { Zone } from './zones';
import { plain } from './words';

/** Cities that begin with the same letters, in the order of the list. */
export interface LetterGroup {
    /** "A" or "A–C". */
    readonly label: string;
    /** The number of its first city in the list. */
    readonly start: number;
    readonly count: number;
}

/** The rows of the Japanese syllabary by their first letters; marks of voiced sounds are dropped before. */
const kanaRows = 'アカサタナハマヤラワ';
const katakana = /^[ァ-ヺ]/;

/** Small and large letters of a row have the codes between the beginnings of two rows. */
function kanaRowOf(letter: string): string {
    return letter < 'ア' ? 'ア' : ([...kanaRows].filter((row) => row <= letter).at(-1) ?? letter);
}

function letterOf(city: string): string {
    const letter = [...plain(city)][0] ?? '';
    if (katakana.test(letter)) {
        return kanaRowOf(letter);
    }
    return /^\p{Script=Han}/u.test(letter) ? '漢字' : letter.toUpperCase();
}

/** The zones of a region in the order of their cities. */
export function sortedByCity(zones: readonly Zone[], code: string): readonly Zone[] {
    const { compare } = new Intl.Collator(code);
    return [...zones].sort((one, other) => compare(one.city, other.city));
}

/** Groups of a sorted list. Letters share a group while it has at most `size` cities. */
export function letterGroups(zones: readonly Zone[], size: number): readonly LetterGroup[] {
    const letters: LetterGroup[] = [];
    zones.forEach(({ city }, index) => {
        const label = letterOf(city);
        const last = letters.at(-1);
        if (last?.label === label) {
            letters.splice(-1, 1, { ...last, count: last.count + 1 });
        } else {
            letters.push({ label, start: index, count: 1 });
        }
    });
    return letters.reduce<LetterGroup[]>((groups, letter) => {
        const last = groups.at(-1);
        if (last === undefined || last.count + letter.count > size) {
            return [...groups, letter];
        }
        const label = `${last.label.split('–')[0] ?? ''}–${letter.label}`;
        return [...groups.slice(0, -1), { label, start: last.start, count: last.count + letter.count }];
    }, []);
}
