import ts from 'typescript';
import tseslint from 'typescript-eslint';

/** Reports what the compiler does, which would have to read and check everything once more by itself. */
const compiles = {
    create: (context) => ({
        Program(node) {
            const { program, esTreeNodeToTSNodeMap } = context.sourceCode.parserServices;
            for (const { start, messageText } of ts.getPreEmitDiagnostics(program, esTreeNodeToTSNodeMap.get(node))) {
                context.report({
                    loc: context.sourceCode.getLocFromIndex(start ?? 0),
                    message: ts.flattenDiagnosticMessageText(messageText, '\n').replace(/[{}]/g, '$&$&'),
                });
            }
        },
    }),
};

/** Runs in the folder above. */
export default tseslint.config(
    { ignores: ['**/dist', '**/*.{js,mjs}', '**/*.generated.ts'] },
    tseslint.configs.strictTypeChecked,
    {
        languageOptions: {
            parserOptions: {
                project: 'pages/tsconfig.json',
                tsconfigRootDir: new URL('..', import.meta.url).pathname,
            },
        },
        plugins: { types: { rules: { compiles } } },
        rules: {
            'types/compiles': 'error',
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
