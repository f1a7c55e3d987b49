import { expect, test } from 'vitest';

import { plain } from './plain';

test.each([
    ['America/Sao_Paulo', 'america sao paulo'],
    ['  Größe der Straße ', 'grosse der strasse'],
    ['Español (España)', 'espanol espana'],
    ['“Hands-free”', 'hands free'],
    ['ｔＶ１', 'tv1'],
    ['أهلاً', 'اهلا'],
    ['とうきょう', 'トウキョウ'],
    ['القاهرة', 'قاهره'],
    ['…', ''],
])('the search compares %s as %s', (text, compared) => {
    expect(plain(text)).toBe(compared);
});
