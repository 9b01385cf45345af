// runs.mjs MODULE: programmes or reads simulated remotes through the page's module, one for each line of JSON on the input,
// {scenario, programme} by the paths of files, programme null to read; answers each by a line: what the page showed, and the trace.
import { readFileSync } from 'node:fs';
import { basename } from 'node:path';
import { createInterface } from 'node:readline';
import { loadModule } from './module.mjs';

const kRead = 2;
const kProgram = 5;
const page = await loadModule(process.argv[2]);
const give = (path) => page.putFile(basename(path), readFileSync(path));

for await (const line of createInterface({ input: process.stdin })) {
    const { scenario, programme } = JSON.parse(line);
    page.seen.boxes.length = 0;
    page.start(give(scenario));
    if (programme) await page.open(give(programme));
    await page.press(programme ? kProgram : kRead);
    const { view, boxes } = page.seen;
    console.log(JSON.stringify({ view, boxes, trace: page.trace() }));
}
process.stdout.write('', () => process.exit(0)); // not before the reader has taken all
