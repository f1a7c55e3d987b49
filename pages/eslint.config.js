import tseslint from 'typescript-eslint';

export default tseslint.config(
    { ignores: ['dist', 'eslint.config.js', 'scripts', '**/*.generated.ts'] },
    tseslint.configs.strictTypeChecked,
    {
        languageOptions: {
            parserOptions: { projectService: true, tsconfigRootDir: new URL('.', import.meta.url).pathname },
        },
        rules: {
            '@typescript-eslint/restrict-template-expressions': ['error', { allowNumber: true }],
            '@typescript-eslint/no-unused-vars': ['error', { ignoreRestSiblings: true }],
            eqeqeq: 'error',
        },
    },
);
