// hid_test.mjs MODULE: the page's module and its platform on a WebHID that plays back what a simulated transmitter has
// said, and fails where it is told to.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { loadModule } from './module.mjs';

const kRead = 2;
const kProgram = 5;
const [, , file] = process.argv;
const example = readFileSync(new URL('../../examples/VENTO-esempio.qlb', import.meta.url));

const items = [{ reportSize: 8, reportCount: 64 }];
const kVendorsOwn = { usagePage: 0xff00, usage: 1, inputReports: [{ items }], outputReports: [{ items }] };
const kKeyboard = { usagePage: 1, usage: 6, inputReports: [], outputReports: [] };

class Device {
    vendorId = 1240;
    productId = 1;
    opened = false;
    opens = 0;
    /** @param {object[]} steps of a trace @param {object} faults */
    constructor(steps, { collection = kVendorsOwn, unplugAt, failAt } = {}) {
        this.collections = [collection];
        this.unplugAt = unplugAt;
        this.failAt = failAt;
        this.steps = steps.filter(({ event }) => event === 'write' || event === 'read');
    }
    async open() {
        this.opened = true;
        this.opens += 1;
    }
    async close() {
        this.opened = false;
    }
    say(hex) {
        const bytes = Uint8Array.from(Buffer.from(hex, 'hex').subarray(1));
        this.oninputreport({ reportId: 0, data: new DataView(bytes.buffer) });
    }
    async sendReport(id, data) {
        const step = this.steps.shift();
        assert.equal(`00${Buffer.from(data).toString('hex')}`, step.report);
        assert.equal(id, 0);
        if (this.steps.length === this.unplugAt) return unplug(this);
        if (this.steps.length <= this.failAt) throw new DOMException('Failed to write the report.', 'NotAllowedError');
        if (this.steps[0]?.event !== 'read') return;
        const answer = this.steps.shift();
        setTimeout(() => {
            this.say(answer.report);
            this.say('ff'.repeat(65)); // what nobody asked for is gone by the next exchange
        });
    }
}

const hid = new EventTarget();
let granted = [];
hid.getDevices = async () => granted;
Object.defineProperty(navigator, 'hid', { value: hid });

function tell(kind, device) {
    hid.dispatchEvent(Object.assign(new Event(kind), { device }));
}
function unplug(device) {
    granted = granted.filter((each) => each !== device);
    tell('disconnect', device);
}
const stepsOf = (trace) => trace.trimEnd().split('\n').map((line) => ({ ...JSON.parse(line), seconds: 0 }));

async function pageOn(...devices) {
    granted = devices;
    const page = await loadModule(file);
    await page.ready;
    page.start('');
    await page.open(page.putFile('VENTO.qlb', example));
    return page;
}
const status = (page) => page.seen.view.controls.find(({ id }) => id === 'Label1').text;

const model = await loadModule(file);
model.start('1');
await model.open(model.putFile('VENTO.qlb', example));
await model.press(kProgram);
const programming = stepsOf(model.trace());
await model.press(kRead);
const reading = stepsOf(model.trace());
const success = 'Operation succesfully completed';

{
    const keyboard = new Device([], { collection: kKeyboard });
    const transmitter = new Device([...programming, ...reading]);
    const page = await pageOn(keyboard, transmitter);
    await page.press(kProgram);
    assert.equal(status(page), success);
    assert.deepEqual(stepsOf(page.trace()), programming, 'the same steps as in the simulation');
    await page.press(kRead);
    assert.equal(status(page), 'TV CITTA 1B\nDTT BETA  2B\nSAT GAMMA 3B');
    await page.nextTurn();
    assert.deepEqual([keyboard.opens, transmitter.opens, transmitter.opened], [0, 2, false], 'opened once for an operation');
}
{
    const page = await pageOn(new Device(programming));
    const link = page.seen.view.link.text;
    let release;
    await new Promise((taken) => {
        void navigator.locks.request('VENTO transmitter 1240:1', () => (taken(), new Promise((end) => (release = end))));
    });
    await page.press(kProgram);
    assert.match(page.seen.boxes[0].detail, /another VENTO/);
    assert.notEqual(page.seen.view.link.text, link);
    release();
    while (page.seen.view.link.text !== link) await page.nextTurn(); // the page notices by itself
    await page.press(kProgram);
    assert.equal(status(page), success);
}
for (const fault of [{ unplugAt: 180 }, { unplugAt: 20 }, { failAt: 90 }]) {
    const device = new Device(programming, fault);
    const page = await pageOn(device);
    await page.press(kProgram);
    assert.equal(page.seen.view.operating, false);
    assert.ok(page.seen.view.code !== 0 || page.seen.boxes.length > 0, 'no success');
    await page.nextTurn();
    assert.equal(device.opened, 'unplugAt' in fault);
}
process.exit(0);
