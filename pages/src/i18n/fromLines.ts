import { choicesOf, settingKeys } from '../settings/catalogue';
import type { Translation } from './en';

/**
 * A translation from its texts, separated by bars: the name of each setting, what each is, the choices, the texts with these
 * names, and the texts that the built code has the numbers of. The build makes such lines.
 */
export function fromLines(lines: string, names: readonly string[]): Translation {
    const texts = lines.split('|');
    const take = (keys: readonly string[]): Record<string, string> =>
        Object.fromEntries(texts.splice(0, keys.length).map((text, index) => [keys[index] ?? '', text]));
    return {
        settings: take(settingKeys),
        about: take(settingKeys),
        choices: take(settingKeys.flatMap(choicesOf)),
        texts: Object.assign(take(names), texts),
    } as unknown as Translation;
}
