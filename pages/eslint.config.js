import tseslint from 'typescript-eslint';

/** Runs in the folder above. */
export default tseslint.config(
    { ignores: ['**/dist', '**/*.{js,mjs}', '**/*.generated.ts'] },
    tseslint.configs.strictTypeChecked,
    {
        languageOptions: {
            parserOptions: {
                project: ['pages/tsconfig.json', 'clients/javascript/tsconfig.json'],
                tsconfigRootDir: new URL('..', import.meta.url).pathname,
            },
        },
        rules: {
            '@typescript-eslint/restrict-template-expressions': ['error', { allowNumber: true }],
            '@typescript-eslint/no-unused-vars': ['error', { ignoreRestSiblings: true }],
            eqeqeq: 'error',
        },
    },
    // A component has one subject.
    {
        files: ['pages/src/**/*.tsx'],
        ignores: ['**/*.test.tsx'],
        rules: { 'max-lines': ['error', 80] },
    },
    // Who may import what, beside the packages in package.json.
    {
        files: ['pages/src/**'],
        ignores: ['**/*.test.{ts,tsx}'],
        rules: {
            'no-restricted-imports': ['error', { patterns: [{ regex: '^(\\.\\./)+(clients|SettingsHandler|docs)/' }] }],
        },
    },
    {
        files: ['clients/javascript/src/**'],
        ignores: ['**/*.test.ts'],
        rules: { 'no-restricted-imports': ['error', { patterns: [{ regex: '^(?!\\./)' }] }] },
    },
);
