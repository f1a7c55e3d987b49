// Writes the time zones that a person can choose, and the names of their cities in one file for each language of the pages,
// from the CLDR. Configurations import it, so that the files are there and up to date.
import { existsSync, mkdirSync, readFileSync, renameSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { fileURLToPath } from 'node:url';

const languages = ['en', 'fr', 'es', 'de', 'ja', 'ar'];
/** The regions of a person's first choice, as the UN numbers them; the browser has their names. */
const regions = ['002', '003', '005', '142', '150', '009', 'AQ'];
/** Continents in names of zones. Others, such as "Atlantic", leave the region to the country. */
const continents = { Africa: '002', Antarctica: 'AQ', Asia: '142', Europe: '150' };

const require = createRequire(import.meta.url);
const folder = fileURLToPath(new URL('../src/timezones/generated/', import.meta.url));
const { territoryContainment } = require('cldr-core/supplemental/territoryContainment.json').supplemental;
const { tz } = require('cldr-bcp47/bcp47/timezone.json').keyword.u;

function contains(region, territory) {
    const parts = territoryContainment[region]?._contains ?? [];
    return region === territory || parts.some((part) => contains(part, territory));
}

function regionOf(name, territory) {
    return continents[name.split('/')[0]] ?? regions.find((region) => contains(region, territory)) ?? '';
}

/** Each with its name, older names of it, country and region. */
const zones = Object.entries(tz)
    .filter(([, { _alias, _deprecated }]) => /\//.test(_alias) && !_deprecated && !/^Etc\/(?!UTC)/.test(_alias))
    .map(([short, { _alias, _iana, _region }]) => {
        const names = _alias.split(' ');
        const name = _iana ?? names.find((one) => one.includes('/'));
        const country = short === 'utc' ? '' : (_region ?? short.slice(0, 2).toUpperCase());
        return {
            first: names[0],
            name,
            others: names.filter((one) => one !== name),
            country,
            region: regionOf(name, country),
        };
    });

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

write(
    'zones',
    zones.map(({ name, others, country, region }) => [name, others.join(' '), country, region]),
);
for (const language of languages) {
    const { zone } = require(`cldr-dates-full/main/${language}/timeZoneNames.json`).main[language].dates.timeZoneNames;
    const nameOf = (id) => id.split('/').reduce((part, step) => part?.[step], zone);
    write(
        `cities-${language}`,
        zones.map(({ first }) => {
            const { exemplarCity, long } = nameOf(first) ?? {};
            return exemplarCity ?? long?.standard ?? first.split('/').at(-1).replaceAll('_', ' ');
        }),
    );
}
