// @ts-check
// Shows what the program says and tells it what the operator does; what VENTO knows and says is in vento-web.wasm.
import { platformImports } from './platform.js'

/**
 * @typedef {{left: number, top: number, width: number, height: number}} Place in pixels
 * @typedef {{id: string, number: number, name: string, key: string, place: Place, background: string,
 *     font: {family: string, size: number, weight: string}}} ControlTexts
 * @typedef {{id: string, guidance: string, text?: string, visible?: boolean, enabled?: boolean, dimmed?: boolean,
 *     items?: string[], value?: number, largest?: number}} ControlView
 * @typedef {{title: string, controls: ControlView[], operating: boolean, simulated: boolean, connectable: boolean,
 *     traced: boolean, file: string, link: {text: string, steps: {text: string, commands: string[]}[]}}} View
 * @typedef {{text: string, detail: string}} Box
 * @typedef {{remove?: () => Promise<void>, requestPermission?: (mode: {mode: string}) => Promise<string>}} FileHandle
 * @typedef {{path: string, handle?: FileHandle}} Leftover
 */

const LARGEST_FILE = 1 << 26; // bytes; the program says of a larger one that it is too large
const FRAME = 30; // milliseconds for each view, where they are shown afterwards
const ENGINE = /** @type {any} */ (WebAssembly); // for what the types do not know yet
const BROWSER = /** @type {any} */ (window);

/** Whether the program can wait in the middle of a call. */
const suspending = 'Suspending' in ENGINE && 'promising' in ENGINE;
const reachable = suspending && 'hid' in navigator;

/** @type {any} */
let program; // the exports
/** @type {any} */
let platform;
/** @type {Record<string, any>} */
let texts = {};
/** @type {View | undefined} */
let view;
/** @type {Leftover | undefined} */
let leftover; // the programme file that was opened, if it is the operator's to delete
let scenario = ''; // chosen where only the program could begin anew with it
let examplePath = '';
let over = false;
let telling = false; // of a failure
/** @type {(() => void | Promise<void>)[]} */
const scenes = []; // what is to be shown, where the program can't wait for it
let playing = false;
/** @type {Promise<void>} */
let played = Promise.resolve();
/** @type {Promise<void>} */
let boxes = Promise.resolve();

/** @param {string} id @returns {any} */
const element = (id) => document.getElementById(id);

// Texts across the border.

/** @param {number} start @param {number} length */
const textAt = (start, length) => new TextDecoder().decode(new Uint8Array(program.memory.buffer, start, length));

/** @param {number} length */
const answered = (length) => textAt(program.text(), length);

/** @param {string} text @returns {number} its length in bytes */
function leave(text) {
    const bytes = new TextEncoder().encode(text);
    new Uint8Array(program.memory.buffer, program.room(bytes.length), bytes.length).set(bytes);
    return bytes.length;
}

// What the program asks of the page.

/** @param {() => void | Promise<void>} scene */
function play(scene) {
    if (suspending) return scene();
    scenes.push(scene);
    if (!playing) played = playScenes();
}

async function playScenes() {
    playing = true;
    for (let scene = scenes.shift(); scene; scene = scenes.shift()) {
        await scene();
        await new Promise((resume) => setTimeout(resume, FRAME));
    }
    playing = false;
}

/** @param {ControlTexts} control */
function place(control) {
    const style = element(control.id).style;
    for (const [name, length] of Object.entries(control.place)) style.setProperty(`--${name}`, `${length}px`);
    style.setProperty('--family', control.font.family);
    style.setProperty('--size', `${control.font.size}px`);
    style.setProperty('--weight', control.font.weight);
    style.setProperty('--ground', control.background);
}

/** @param {any} given */
function takeTexts(given) {
    texts = given;
    document.documentElement.lang = texts.tag;
    const form = element('form');
    for (const [name, length] of Object.entries(texts.form)) form.style.setProperty(`--${name}`, `${length}px`);
    for (const control of /** @type {ControlTexts[]} */ (texts.controls)) {
        const node = element(control.id);
        place(control);
        if (control.name) node.setAttribute('aria-label', control.name);
        if (control.key) {
            node.accessKey = control.key.toLowerCase();
            node.setAttribute('aria-keyshortcuts', `Alt+${control.key}`);
        }
    }
    for (const id of ['connect', 'saveRule', 'saveTrace', 'example', 'simulate', 'real']) element(id).textContent = texts[id];
    for (const id of ['connect', 'saveTrace']) element(id).title = texts[`${id}Tip`];
    element('boxOk').textContent = texts.ok;
    element('link').setAttribute('aria-label', texts.link);
    element('language').setAttribute('aria-label', texts.language);
    element('language').value = texts.tag;
}

/** A caption with its letter underlined. @param {any} node @param {string} caption */
function setCaption(node, caption) {
    if (node.textContent === caption) return;
    const at = node.accessKey ? caption.indexOf(node.accessKey.toUpperCase()) : -1;
    if (at < 0) return void (node.textContent = caption);
    const letter = document.createElement('u');
    letter.textContent = caption[at];
    node.replaceChildren(caption.slice(0, at), letter, caption.slice(at + 1));
}

/** @param {ControlView} control */
function showControl(control) {
    const node = element(control.id);
    const tip = control.guidance === node.ariaLabel ? '' : control.guidance;
    if (tip && node.title !== tip) node.title = tip;
    if (!tip) node.removeAttribute('title');
    if (control.items) {
        node.replaceChildren(...control.items.map((text) => Object.assign(document.createElement('li'), { textContent: text })));
    } else if (control.largest !== undefined) {
        node.hidden = !control.visible;
        node.max = control.largest;
        node.value = control.value;
    } else if (control.id === 'Label1') {
        if (node.textContent !== control.text) node.textContent = control.text;
    } else if (control.text !== undefined) {
        setCaption(node, control.text);
        node.hidden = !(control.visible ?? control.text !== '');
        // Disabled, a button would lose the focus.
        node.setAttribute('aria-disabled', String(control.enabled === false || control.dimmed === true));
    }
}

/** @param {{text: string, commands: string[]}} step */
function stepNode(step) {
    const node = document.createElement('li');
    node.append(step.text, ...step.commands.map((line) => Object.assign(document.createElement('code'), { textContent: line })));
    return node;
}

/** @param {View} next */
function show(next) {
    view = next;
    const bar = view.controls.find((each) => each.largest !== undefined);
    const share = bar?.visible && bar.largest ? `${Math.floor((100 * (bar.value ?? 0)) / bar.largest)} % – ` : '';
    document.title = share + view.title;
    view.controls.forEach(showControl);
    document.body.classList.toggle('operating', view.operating);
    if (element('linkText').textContent !== view.link.text) element('linkText').textContent = view.link.text;
    element('connect').hidden = !view.connectable;
    element('connect').setAttribute('aria-disabled', String(view.operating));
    const steps = JSON.stringify(view.link.steps);
    if (element('steps').dataset.shown !== steps) {
        element('steps').dataset.shown = steps;
        element('steps').replaceChildren(...view.link.steps.map(stepNode));
    }
    element('help').hidden = view.link.steps.length === 0;
    element('saveTrace').hidden = !view.traced;
    element('example').hidden = !view.simulated || view.file !== '';
    element('simulate').hidden = view.simulated || view.operating;
    element('real').hidden = !view.simulated || view.operating || !reachable;
    element('language').disabled = view.operating;
}

/** Shows a box, one after the other; done when it is closed. @param {Box} box @returns {Promise<void>} */
function showBox({ text, detail }) {
    const dialog = element('box');
    boxes = boxes.then(() => {
        element('boxText').textContent = text;
        element('boxDetail').textContent = detail;
        dialog.showModal();
        return new Promise((closed) => dialog.addEventListener('close', () => closed(), { once: true }));
    });
    return boxes;
}

/** Tells the operator what nobody has foreseen, wherever in the script it happened. @param {any} error */
function tellFailure(error) {
    if (!error || over || telling) return;
    telling = true;
    const detail = `${error.message ?? error}\n${texts.afterUnforeseen}`;
    void showBox({ text: texts.unforeseen, detail }).then(() => (telling = false));
    if (view?.operating) program.restart(); // unless it goes on
}

/** @param {string} description @returns {Promise<{file: File, handle?: FileHandle} | undefined>} */
async function pick(description) {
    if (BROWSER.showOpenFilePicker) {
        try {
            const accept = { 'application/x-vento-programme': ['.qlb'] };
            const [handle] = await BROWSER.showOpenFilePicker({ id: 'programme', types: [{ description, accept }] });
            return { file: await handle.getFile(), handle };
        } catch (error) {
            if (/** @type {any} */ (error).name !== 'SecurityError') return undefined; // nothing was chosen
        }
    }
    const input = Object.assign(document.createElement('input'), { type: 'file', accept: '.qlb,.json' });
    return new Promise((chosen) => {
        input.addEventListener('change', () => chosen(input.files?.[0] && { file: input.files[0] }));
        input.addEventListener('cancel', () => chosen(undefined));
        input.click();
    });
}

/** @param {string} filter as "description|pattern|" @returns {Promise<string | undefined>} a path */
async function choose(filter) {
    const chosen = await pick(filter.split('|')[0]);
    if (!chosen) return undefined;
    const path = await keep(chosen.file, chosen.handle);
    if (!isScenario(chosen.file.name)) return path;
    scenario = path;
    return undefined;
}

/** @param {string} json */
function end(json) {
    over = true;
    document.body.classList.remove('operating');
    element('program').hidden = true;
    element('ended').hidden = false;
    const told = JSON.parse(json);
    document.title = told.title;
    element('endTitle').textContent = told.title;
    for (const id of ['delete', 'keep', 'again']) element(id).textContent = told[id];
    const fate = (/** @type {string} */ text) => {
        element('choice').hidden = true;
        element('fate').textContent = text;
        element('endTitle').focus();
    };
    element('endTitle').focus();
    if (!leftover) return;
    const handle = leftover.handle;
    if (!handle?.remove) return fate(told.forgotten);
    element('fate').textContent = told.question;
    element('choice').hidden = false;
    element('keep').onclick = () => fate(told.kept);
    element('delete').onclick = async () => {
        try {
            const allowed = (await handle.requestPermission?.({ mode: 'readwrite' })) ?? 'granted';
            if (allowed !== 'granted') return fate(told.refused);
            await handle.remove?.();
            fate(told.deleted);
        } catch {
            fate(told.refused);
        }
    };
}

function imports() {
    const waits = (/** @type {(...args: number[]) => any} */ call) => (suspending ? new ENGINE.Suspending(call) : call);
    return {
        texts: (/** @type {number} */ p, /** @type {number} */ n) => {
            const given = JSON.parse(textAt(p, n));
            void play(() => takeTexts(given));
        },
        show: (/** @type {number} */ p, /** @type {number} */ n) => {
            const next = JSON.parse(textAt(p, n));
            void play(() => show(next));
        },
        tell: (/** @type {number} */ p, /** @type {number} */ n) => {
            const box = JSON.parse(textAt(p, n));
            void play(() => showBox(box));
        },
        ask: waits((p, n) => {
            const box = JSON.parse(textAt(p, n));
            return play(() => showBox(box));
        }),
        choose: waits((_title, _titleLength, p, n) => {
            if (!suspending) return -1;
            return choose(textAt(p, n)).then((path) => (path === undefined ? -1 : leave(path)));
        }),
        end: (/** @type {number} */ p, /** @type {number} */ n) => {
            scenes.length = 0;
            end(textAt(p, n));
        },
        onLinux: () => Number(/^Linux/.test(navigator.platform) && !/Android/.test(navigator.userAgent)),
        canReachTransmitters: () => Number(reachable),
    };
}

// What the operator does.

/** Calls an export that may wait. @param {string} name @param {...number} args */
async function call(name, ...args) {
    await played;
    if (over) return;
    await (suspending ? ENGINE.promising(program[name])(...args) : program[name](...args));
    if (!scenario) return;
    const path = scenario;
    scenario = '';
    begin(path);
}

/** @param {string} name */
const isScenario = (name) => /\.json$/i.test(name);

/** Puts a file where the program finds it. @param {File} file @param {FileHandle} [handle] @returns {Promise<string>} */
async function keep(file, handle) {
    const bytes = file.size > LARGEST_FILE ? new Uint8Array() : new Uint8Array(await file.arrayBuffer());
    return platform.putFile(file.name, bytes, { size: file.size, handle });
}

/** A file that was dropped or launched. @param {File} file @param {FileHandle} [handle] */
async function take(file, handle) {
    if (over || view?.operating) return;
    if (!isScenario(file.name) && !/\.qlb$/i.test(file.name)) {
        leave(file.name);
        return program.refuse();
    }
    const path = await keep(file, handle);
    if (isScenario(file.name)) return begin(path);
    leave(path);
    await call('open');
}

/** Begins anew, with a simulation or none. @param {string} simulation */
function begin(simulation) {
    leave(simulation);
    program.start();
}

/** @param {string} id */
function press(id) {
    if (id === 'Command3') return program.close();
    if (id === 'hint') return program.hint();
    if (playing && view?.operating) return;
    if (id === 'Command4' && !suspending) return void pick('').then((chosen) => chosen && take(chosen.file, chosen.handle));
    void call('press', texts.controls.find((/** @type {ControlTexts} */ each) => each.id === id).number);
}

/** @param {string} name @param {string} content */
function save(name, content) {
    const link = document.createElement('a');
    link.href = URL.createObjectURL(new Blob([content]));
    link.download = name;
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}

async function openExample() {
    const length = program.example();
    const bytes = new Uint8Array(program.memory.buffer, program.text(), length).slice();
    examplePath = platform.putFile('VENTO-esempio.qlb', bytes);
    leave(examplePath);
    await call('open');
}

/** @param {KeyboardEvent} event */
function key(event) {
    if (event.defaultPrevented || element('box').open || over) return;
    if (event.key === 'Escape') program.cancel();
    if (event.key === 'F1') {
        event.preventDefault();
        program.details();
    }
    if (!event.altKey || event.ctrlKey || event.metaKey) return;
    const pressed = texts.controls.find((/** @type {ControlTexts} */ each) => each.key && event.code === `Key${each.key}`);
    if (!pressed || element(pressed.id).hidden) return;
    event.preventDefault();
    element(pressed.id).click();
}

/** @param {DragEvent} event */
function drop(event) {
    event.preventDefault();
    const [item, ...more] = [...(event.dataTransfer?.items ?? [])].filter((each) => each.kind === 'file');
    const file = item?.getAsFile();
    if (!file || more.length > 0) return;
    const handle = /** @type {any} */ (item).getAsFileSystemHandle?.() ?? Promise.resolve();
    void handle.catch(() => undefined).then((/** @type {any} */ found) => take(file, found ?? undefined));
}

/** @param {string} tag */
function chooseLanguage(tag) {
    try {
        localStorage.setItem('language', tag);
    } catch {} // it then holds for this page
    chosenLanguage = tag;
    program.restart();
}

let chosenLanguage = '';
const language = () => {
    try {
        return chosenLanguage || localStorage.getItem('language') || navigator.language;
    } catch {
        return chosenLanguage || navigator.language;
    }
};

function listen() {
    for (const id of ['Command2', 'Command3', 'Command4', 'Command6_0', 'hint']) element(id).onclick = () => press(id);
    element('hint').onmousedown = (/** @type {Event} */ event) => event.preventDefault(); // the focus stays where it is
    element('connect').onclick = () => call('connect');
    element('saveRule').onclick = () => save('60-vento.rules', answered(program.udevRule()));
    element('saveTrace').onclick = () => save('vento-trace.jsonl', answered(program.trace()));
    element('example').onclick = openExample;
    element('language').onchange = () => chooseLanguage(element('language').value);
    element('again').onclick = () => location.reload();
    document.addEventListener('keydown', key);
    document.addEventListener('dragover', (event) => {
        event.preventDefault();
        if (event.dataTransfer) event.dataTransfer.dropEffect = over || view?.operating ? 'none' : 'copy';
    });
    document.addEventListener('drop', drop);
    document.addEventListener('copy', (event) => {
        if (!getSelection()?.isCollapsed || !element('Label1').textContent) return;
        event.clipboardData?.setData('text/plain', element('Label1').textContent);
        event.preventDefault();
    });
    window.addEventListener('error', ({ error }) => tellFailure(error));
    window.addEventListener('unhandledrejection', ({ reason }) => tellFailure(reason));
    window.addEventListener('beforeunload', (event) => {
        if (view?.operating && !over) event.preventDefault();
    });
    platform.onDevicesChanged(() => program.look());
    BROWSER.launchQueue?.setConsumer(async (/** @type {any} */ launch) => {
        const [handle] = launch.files;
        if (handle) await take(await handle.getFile(), handle);
    });
}

// The program.

/** @returns {Promise<ArrayBuffer>} */
async function code() {
    const inPage = document.getElementById('wasm');
    if (!inPage) return (await fetch('vento-web.wasm')).arrayBuffer();
    const packed = Uint8Array.from(atob(inPage.textContent ?? ''), (letter) => letter.charCodeAt(0));
    return new Response(new Blob([packed]).stream().pipeThrough(new DecompressionStream('gzip'))).arrayBuffer();
}

async function run() {
    platform = platformImports({
        memory: () => program.memory,
        language,
        onDelete: (/** @type {string} */ path, /** @type {FileHandle | undefined} */ handle) => {
            if (path && path !== examplePath) leftover = { path, handle };
        },
        suspending,
    });
    const module = await WebAssembly.instantiate(await code(), { ...platform.imports, desktop: imports() });
    program = module.instance.exports;
    program._initialize();
    listen();
    begin(!reachable || new URLSearchParams(location.search).has('simulate') ? '1' : '');
    element('program').hidden = false;
    element('broken').remove();
    if ('serviceWorker' in navigator && document.querySelector('link[rel=manifest]'))
        void navigator.serviceWorker.register('service_worker.js').catch(() => undefined);
}

run().catch((error) => {
    console.error(error);
    element('failed').hidden = false;
});
