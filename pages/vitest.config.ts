import { defineConfig } from 'vitest/config';

export default defineConfig({
    esbuild: { jsx: 'automatic', jsxImportSource: 'preact' },
    test: { include: ['src/**/*.test.{ts,tsx}'], environment: 'happy-dom' },
});
