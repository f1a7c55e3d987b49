import { describe, expect, it } from 'vitest';

import { translations } from '../i18n/translations';
import { regionsIn } from './testData';
import { identifierOf, isNamed, zonesOf, type Zone } from './zones';

const regions = regionsIn('en');
const zones = zonesOf(regions);

function zoneOf(name: string): Zone {
    const found = zones.filter((zone) => isNamed(zone, name));
    expect(found.length, name).toBe(1);
    return found[0] as Zone;
}

describe('a time zone', () => {
    it.each([
        ['Asia/Calcutta', 'Asia/Kolkata'],
        ['Europe/Kiev', 'Europe/Kyiv'],
        ['America/Godthab', 'America/Nuuk'],
        ['US/Pacific', 'America/Los_Angeles'],
        ['UTC', 'Etc/UTC'],
    ])('is the same by its old name, %s, and its new one, %s', (old, current) => {
        expect(zoneOf(old)).toBe(zoneOf(current));
        expect(zoneOf(old).id).toBe(current);
    });

    it('is found for every identifier that a browser reports', () => {
        Intl.supportedValuesOf('timeZone').forEach(zoneOf);
    });

    it('keeps the identifier that the TV reports', () => {
        expect(identifierOf(zoneOf('Asia/Kolkata'), 'Asia/Calcutta')).toBe('Asia/Calcutta');
        expect(identifierOf(zoneOf('Asia/Kolkata'), 'Asia/Kolkata')).toBe('Asia/Kolkata');
    });

    it('is set by its newest identifier that the browser knows', () => {
        const before2022 = (id: string) => id !== 'Europe/Kyiv';
        expect(identifierOf(zoneOf('Europe/Kiev'), 'Asia/Tokyo')).toBe('Europe/Kyiv');
        expect(identifierOf(zoneOf('Europe/Kyiv'), 'Asia/Tokyo', before2022)).toBe('Europe/Kiev');
        expect(identifierOf(zoneOf('Europe/Kyiv'), undefined, () => false)).toBe('Europe/Kyiv');
    });

    it('has a city and a country; UTC has a name alone', () => {
        for (const { id, city, country } of zones) {
            expect(city, id).not.toBe('');
            expect(country === '', id).toBe(id === 'Etc/UTC');
        }
        expect(regions.at(-1)?.zones.map(({ id }) => id)).toEqual(['Etc/UTC']);
    });

    it('is in the region in which people look for it', () => {
        const regionOf = (name: string) => regions.find((region) => region.zones.includes(zoneOf(name)))?.name;
        expect(regionOf('Atlantic/Reykjavik')).toBe('Europe');
        expect(regionOf('Pacific/Honolulu')).toBe('North America');
        expect(regionOf('Asia/Vladivostok')).toBe('Asia');
        expect(regionOf('Indian/Mauritius')).toBe('Africa');
        expect(regionOf('America/Sao_Paulo')).toBe('South America');
    });
});

describe.each(Object.keys(translations))('the list of a region in %s', (code) => {
    it('has a name of its own for each city, in the order of the language', () => {
        const { compare } = new Intl.Collator(code);
        for (const { zones } of regionsIn(code)) {
            const names = zones.map(({ city, country }) => `${city} ${country}`);
            expect(new Set(names).size).toBe(names.length);
            const cities = zones.map(({ city }) => city);
            expect([...cities].sort(compare)).toEqual(cities);
        }
    });
});

describe('the letters of a list', () => {
    const labelsIn = (code: string) => regionsIn(code)[3]?.letters.map(({ label }) => label);

    it('share a row when few cities begin with them', () => {
        expect(labelsIn('en')).toEqual(['A', 'B–C', 'D–H', 'I–J', 'K', 'M–N', 'O–R', 'S', 'T–U', 'V–Y']);
    });

    it('are the rows of the syllabary in Japanese, then characters', () => {
        expect(labelsIn('ja')).toEqual(['ア', 'カ', 'サ', 'タ', 'ナ', 'ハ', 'マ–ラ', '漢字']);
    });
});
