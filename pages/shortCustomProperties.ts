import type { Plugin } from 'vite';

const customProperty = /--[a-z][\w-]*/g;
const letters = 'abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ';

/** Gives the custom properties of the styles names of a letter. Scripts use none of them. */
export const shortCustomProperties: Plugin = {
    name: 'short-custom-properties',
    apply: 'build',
    generateBundle(_options, bundle) {
        const styles = Object.values(bundle).flatMap((file) =>
            file.type === 'asset' && file.fileName.endsWith('.css') ? [file] : [],
        );
        const names = [...new Set(styles.flatMap(({ source }) => String(source).match(customProperty) ?? []))];
        if (names.length > letters.length) {
            this.error(`more than ${letters.length} custom properties`);
        }
        for (const file of styles) {
            file.source = String(file.source)
                .replace(customProperty, (name) => `--${letters[names.indexOf(name)]}`)
                .replace(/(--\w): /g, '$1:');
        }
    },
};
