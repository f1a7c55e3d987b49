// Writes what the panel of time zones loads, one file for each language of the pages: the regions, their cities in order, and
// the letters with which these begin. The names of cities come from the CLDR. Configurations import it, so that the files are
// there and up to date.
import { existsSync, mkdirSync, readFileSync, renameSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { fileURLToPath } from 'node:url';

/** The regions of a person's first choice, as the UN numbers them. Browsers have names of countries alone. */
const regions = ['002', '003', '005', '142', '150', '009', 'AQ'];
const languages = {
    en: ['Africa', 'North America', 'South America', 'Asia', 'Europe', 'Oceania', 'Antarctica'],
    fr: ['Afrique', 'Amérique du Nord', 'Amérique du Sud', 'Asie', 'Europe', 'Océanie', 'Antarctique'],
    es: ['África', 'América del Norte', 'América del Sur', 'Asia', 'Europa', 'Oceanía', 'Antártida'],
    de: ['Afrika', 'Nordamerika', 'Südamerika', 'Asien', 'Europa', 'Ozeanien', 'Antarktis'],
    ja: ['アフリカ', '北アメリカ', '南アメリカ', 'アジア', 'ヨーロッパ', 'オセアニア', '南極'],
    ar: ['أفريقيا', 'أمريكا الشمالية', 'أمريكا الجنوبية', 'آسيا', 'أوروبا', 'أوقيانوسيا', 'أنتاركتيكا'],
};
/** Continents in names of zones. Others, such as "Atlantic", leave the region to the country. */
const continents = { Africa: '002', Antarctica: 'AQ', Asia: '142', Europe: '150' };
/** How many cities share a letter at most, unless they begin with the same. */
const groupSize = 10;

const require = createRequire(import.meta.url);
const folder = fileURLToPath(new URL('../src/timezones/generated/', import.meta.url));
const { territoryContainment } = require('cldr-core/supplemental/territoryContainment.json').supplemental;
const { primaryZones } = require('cldr-core/supplemental/primaryZones.json').supplemental;
const { tz } = require('cldr-bcp47/bcp47/timezone.json').keyword.u;

function contains(region, territory) {
    const parts = territoryContainment[region]?._contains ?? [];
    return region === territory || parts.some((part) => contains(part, territory));
}

function regionOf(id, country) {
    return continents[id.split('/')[0]] ?? regions.find((region) => contains(region, country));
}

/** Each with its newest identifier, the others, the one that the CLDR uses, its country (UTC has none), and whether it is the country's usual one. */
const zones = Object.entries(tz)
    .filter(([, { _alias, _deprecated }]) => _alias?.includes('/') && !_deprecated && !/^Etc\/(?!UTC)/.test(_alias))
    .map(([short, { _alias, _iana, _region }]) => {
        const names = _alias.split(' ');
        const id = _iana ?? names[0];
        const country = short === 'utc' ? '' : (_region ?? short.slice(0, 2).toUpperCase());
        const isMain = names.includes(primaryZones[country]) || undefined;
        return { id, others: names.filter((name) => name !== id), inCldr: names[0], country, isMain };
    });

/** The zones of a region (UTC: of none) in the order of their cities. */
function listOf(region, language) {
    const { zone: names } = require(`cldr-dates-full/main/${language}/timeZoneNames.json`).main[language].dates
        .timeZoneNames;
    const cityOf = (id) => {
        const { exemplarCity, long } = id.split('/').reduce((part, step) => part?.[step], names) ?? {};
        return exemplarCity ?? long?.standard ?? id.split('/').at(-1).replaceAll('_', ' ');
    };
    return zones
        .filter(({ id, country }) => regionOf(id, country) === region)
        .map(({ inCldr, ...zone }) => ({ ...zone, city: cityOf(inCldr) }))
        .sort((one, other) => new Intl.Collator(language).compare(one.city, other.city));
}

/** The rows of the Japanese syllabary by their first letters. */
const kanaRows = [...'アカサタナハマヤラワ'];

function letterOf(city) {
    const letter = city
        .normalize('NFKD')
        .replace(/[\p{M}\p{P}]/gu, '')[0]
        .toUpperCase();
    if (/[ァ-ヺ]/.test(letter)) {
        return kanaRows.findLast((row) => row <= letter) ?? kanaRows[0];
    }
    return /\p{Script=Han}/u.test(letter) ? '漢字' : letter;
}

/** The letters of a sorted list, each with the number of its first city. */
function lettersOf(list) {
    const groups = [];
    for (const [start, { city }] of list.entries()) {
        const letter = letterOf(city);
        if (groups.at(-1)?.letter === letter) {
            groups.at(-1).count += 1;
        } else {
            groups.push({ letter, start, count: 1 });
        }
    }
    const shared = [];
    for (const { letter, start, count } of groups) {
        const last = shared.at(-1);
        if (last === undefined || last.count + count > groupSize) {
            shared.push({ first: letter, last: letter, start, count });
        } else {
            Object.assign(last, { last: letter, count: last.count + count });
        }
    }
    return shared.map(({ first, last, start }) => ({ label: first === last ? first : `${first}–${last}`, start }));
}

function write(file, content) {
    const target = `${folder}${file}.json`;
    const text = JSON.stringify(content);
    if (!existsSync(target) || readFileSync(target, 'utf8') !== text) {
        // Renamed, because another process may be reading it.
        const draft = `${target}.${process.pid}`;
        mkdirSync(folder, { recursive: true });
        writeFileSync(draft, text);
        renameSync(draft, target);
    }
}

for (const [language, names] of Object.entries(languages)) {
    write(
        language,
        [...regions, undefined].map((region, number) => {
            const list = listOf(region, language);
            return { name: names[number] ?? '', letters: lettersOf(list), zones: list };
        }),
    );
}
