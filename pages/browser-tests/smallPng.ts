import { deflateSync } from 'node:zlib';

import { PNG } from 'pngjs';

const signature = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]);
const mostColours = 256;

function crc32(data: Buffer): number {
    let crc = ~0;
    for (const byte of data) {
        crc ^= byte;
        for (let bit = 0; bit < 8; bit += 1) {
            crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
        }
    }
    return ~crc >>> 0;
}

function chunk(name: string, data: Buffer): Buffer {
    const body = Buffer.concat([Buffer.from(name, 'latin1'), data]);
    const frame = Buffer.alloc(4);
    frame.writeUInt32BE(data.length);
    const check = Buffer.alloc(4);
    check.writeUInt32BE(crc32(body));
    return Buffer.concat([frame, body, check]);
}

function distance(one: number, other: number): number {
    const difference = (shift: number) => ((one >> shift) & 0xff) - ((other >> shift) & 0xff);
    return difference(16) ** 2 + difference(8) ** 2 + difference(0) ** 2;
}

/** The place in `palette` of each colour, or of the one nearest to it. */
function places(colours: readonly number[], palette: readonly number[]): Map<number, number> {
    return new Map(
        colours.map((colour, index) => {
            const nearest = (best: number, candidate: number, place: number) =>
                distance(candidate, colour) < distance(palette[best] ?? 0, colour) ? place : best;
            return [colour, index < palette.length ? index : palette.reduce(nearest, 0)];
        }),
    );
}

/** The same picture with its 256 most frequent colours, a third as large: a page has few, but many shades at the edges of letters. */
export function smallPng(picture: Buffer): Buffer {
    const { width, height, data } = PNG.sync.read(picture);
    const pixels = Array.from({ length: width * height }, (_, index) => data.readUIntBE(index * 4, 3));
    const counts = new Map<number, number>();
    for (const colour of pixels) {
        counts.set(colour, (counts.get(colour) ?? 0) + 1);
    }
    const colours = [...counts].sort(([, one], [, other]) => other - one).map(([colour]) => colour);
    const palette = colours.slice(0, mostColours);
    const place = places(colours, palette);

    const rows = Buffer.alloc((width + 1) * height);
    pixels.forEach((colour, index) => {
        rows[index + Math.floor(index / width) + 1] = place.get(colour) ?? 0;
    });
    const header = Buffer.alloc(13);
    header.writeUInt32BE(width, 0);
    header.writeUInt32BE(height, 4);
    header.set([8, 3], 8);
    return Buffer.concat([
        signature,
        chunk('IHDR', header),
        chunk('PLTE', Buffer.from(palette.flatMap((colour) => [colour >> 16, (colour >> 8) & 0xff, colour & 0xff]))),
        chunk('IDAT', deflateSync(rows, { level: 9 })),
        chunk('IEND', Buffer.alloc(0)),
    ]);
}
