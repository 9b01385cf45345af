// run_program.mjs PROGRAM.wasm [ARGUMENT...]: a program with a main(), such as a test, under node. Of the page's script it
// finds nothing.
import { readFileSync } from 'node:fs';
import { WASI } from 'node:wasi';

const [program, ...rest] = process.argv.slice(2);
const wasi = new WASI({ version: 'preview1', args: [program, ...rest], env: process.env });
const compiled = new WebAssembly.Module(readFileSync(program));
const imports = { wasi_snapshot_preview1: { ...wasi.wasiImport } };
for (const { module, name } of WebAssembly.Module.imports(compiled)) {
    imports[module] ??= {};
    imports[module][name] ??= () => {
        throw new Error(`a test has come to ${module}.${name}`);
    };
}
process.exitCode = wasi.start(new WebAssembly.Instance(compiled, imports));
