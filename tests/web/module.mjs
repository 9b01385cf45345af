// vento-web.wasm without a page, under node: the script's platform as it is, of the page what a test wants to know.
import { readFileSync } from 'node:fs';
import { platformImports } from '../../src/platform/web/platform.js';

/** @param {string} file the module @param {{language?: string}} options */
export async function loadModule(file, { language = 'en' } = {}) {
    const seen = { view: undefined, boxes: [], ended: false };
    let program;
    const text = (start, length) => new TextDecoder().decode(new Uint8Array(program.memory.buffer, start, length));
    const boxed = (start, length) => void seen.boxes.push(JSON.parse(text(start, length)));
    const platform = platformImports({ memory: () => program.memory, language: () => language });
    platform.onDevicesChanged(() => program?.look());
    const desktop = {
        texts: () => undefined,
        show: (start, length) => (seen.view = JSON.parse(text(start, length))),
        tell: boxed,
        ask: new WebAssembly.Suspending(async (start, length) => boxed(start, length)),
        choose: new WebAssembly.Suspending(async () => -1),
        end: () => (seen.ended = true),
        onLinux: () => 1,
        canReachTransmitters: () => 1,
    };
    const { instance } = await WebAssembly.instantiate(readFileSync(file), { ...platform.imports, desktop });
    program = instance.exports;
    program._initialize();
    const leave = (given) => {
        const bytes = new TextEncoder().encode(given);
        new Uint8Array(program.memory.buffer, program.room(bytes.length), bytes.length).set(bytes);
    };
    const waiting = (name) => WebAssembly.promising(program[name]);
    return {
        seen,
        program,
        ready: platform.ready,
        nextTurn: platform.nextTurn,
        putFile: platform.putFile,
        getFile: platform.getFile,
        start: (simulation) => (leave(simulation), program.start()),
        open: (path) => (leave(path), waiting('open')()),
        press: waiting('press'),
        trace: () => {
            const length = program.trace();
            return text(program.text(), length);
        },
    };
}
