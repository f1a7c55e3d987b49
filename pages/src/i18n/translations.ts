import { ar } from './ar';
import { de } from './de';
import { en, type Translation } from './en';
import { es } from './es';
import { fr } from './fr';
import { ja } from './ja';

/** By the code of their language. The build has a shorter form of them, see compactTexts.ts. */
export const translations: Readonly<Record<string, Translation>> & { readonly en: Translation } = {
    en,
    fr,
    es,
    de,
    ja,
    ar,
};
