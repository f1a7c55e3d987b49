import { describe, expect, it } from 'vitest';

import { translations } from '../i18n/language';
import { letterGroups, sortedByCity } from './letters';
import { zonesIn } from './testData';
import { identifierOf, isNamed, regionCodes, type Zone } from './zones';

const zones = zonesIn('en');

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

    it('has a city, a country and a region; UTC has a name alone', () => {
        for (const { id, city, country, region } of zones) {
            expect(city, id).not.toBe('');
            expect(country === '', id).toBe(id === 'Etc/UTC');
            expect(region === '' || regionCodes.some((code) => code === region), id).toBe(true);
            expect(region === '', id).toBe(id === 'Etc/UTC');
        }
    });

    it('is in the region in which people look for it', () => {
        const regionOf = (name: string) => zoneOf(name).region;
        expect(regionOf('Atlantic/Reykjavik')).toBe('150');
        expect(regionOf('Pacific/Honolulu')).toBe('003');
        expect(regionOf('Asia/Vladivostok')).toBe('142');
        expect(regionOf('Indian/Mauritius')).toBe('002');
        expect(regionOf('America/Sao_Paulo')).toBe('005');
    });
});

describe.each(Object.keys(translations))('the list of a region in %s', (code) => {
    it('has a name of its own for each city', () => {
        const names = zonesIn(code).map(({ city, region, country }) => `${region} ${country} ${city}`);
        expect(new Set(names).size).toBe(names.length);
    });

    it('is covered by its letters', () => {
        for (const region of regionCodes) {
            const cities = sortedByCity(
                zonesIn(code).filter((zone) => zone.region === region),
                code,
            );
            let next = 0;
            for (const { start, count } of letterGroups(cities, 10)) {
                expect(start).toBe(next);
                next += count;
            }
            expect(next).toBe(cities.length);
        }
    });
});

describe('the letters of a list', () => {
    const labelsIn = (code: string) => {
        const asia = zonesIn(code).filter(({ region }) => region === '142');
        return letterGroups(sortedByCity(asia, code), 10).map(({ label }) => label);
    };

    it('share a row when few cities begin with them', () => {
        expect(labelsIn('en')).toEqual(['A', 'B–C', 'D–H', 'I–J', 'K', 'M–N', 'O–R', 'S', 'T–U', 'V–Y']);
    });

    it('are the rows of the syllabary in Japanese, then characters', () => {
        expect(labelsIn('ja')).toEqual(['ア', 'カ', 'サ', 'タ', 'ナ', 'ハ', 'マ–ラ', '漢字']);
    });
});
