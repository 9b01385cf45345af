#!/usr/bin/env python3
"""What a programming run takes in the page, beside ventoctl, both on the simulator: page_run.py VENTO.HTML VENTOCTL.

The example goes into a remote by way of a transmitter that answers at once, so that what is measured is VENTO's own work,
the browser's turns included; and, in the page, through the plain simulation behind another tab. Medians, and the exchanges
of a run.
"""

import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/window"))
from web import Window, browser  # noqa: E402

ROUNDS = 9
EXAMPLE = ROOT / "examples/VENTO-esempio.qlb"
RUN = """new Promise(done => {
    const status = document.getElementById('Label1'), button = document.getElementById('Command6_0');
    let began = performance.now();
    const watch = new MutationObserver(() => {
        if (!/success/.test(status.textContent)) return;
        watch.disconnect();
        done((performance.now() - began) / 1000);
    });
    watch.observe(status, {childList: true, characterData: true, subtree: true});
    button.click();
})"""


def page_seconds(window):
    return window.evaluate(RUN)


def console_seconds(ventoctl, folder):
    command = [ventoctl, "program", EXAMPLE, f"--simulate={folder / 'scenario.json'}", "--json", "--quiet"]
    started = time.monotonic()
    told = json.loads(subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout)
    return time.monotonic() - started, told["seconds"], told["cycles"]


def main(page, ventoctl):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "scenario.json").write_text('{"reportMicroseconds": 0}')
        (folder / EXAMPLE.name).write_bytes(EXAMPLE.read_bytes())
        times = {"page": [], "page behind another tab": [], "ventoctl, the run": [], "ventoctl, the process": []}
        with Window(page, folder, EXAMPLE.name, simulate="scenario.json") as window:
            for _ in range(ROUNDS):
                process, run, cycles = console_seconds(ventoctl, folder)
                times["ventoctl, the process"].append(process)
                times["ventoctl, the run"].append(run)
                times["page"].append(page_seconds(window))
            browser().call("Target.createTarget", url="about:blank", browserContextId=window.context)
            for _ in range(ROUNDS):
                times["page behind another tab"].append(page_seconds(window))
            hidden = window.evaluate("document.hidden")
        for what, seconds in times.items():
            print(f"{what:24} {1000 * statistics.median(seconds):7.1f} ms, {1000 * min(seconds):7.1f} at the least")
        print(f"{cycles} exchanges; hidden behind another tab: {hidden}")


main(*sys.argv[1:])
