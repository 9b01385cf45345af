#!/usr/bin/env python3
"""What a programming run takes in the page, beside ventoctl: page_run.py VENTO.HTML BIN [device]. BIN has the programs.

The example goes into a remote by way of a transmitter that answers at once, so that what is measured is VENTO's own work,
the browser's turns included; and, in the page, through the plain simulation behind another tab. Medians, and the exchanges
of a run. With `device` the transmitter is a HID device of the kernel, and then one on USB: in the virtual machine, as root,
by tests/vm/boot -m 4096 -t 900.
"""

import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "tests/vm"), str(ROOT / "tests/window")]
from common import eventually  # noqa: E402
from web import Window, browser  # noqa: E402

ROUNDS = 5
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


def console_seconds(ventoctl, *options):
    started = time.monotonic()
    command = [ventoctl, "program", EXAMPLE, *options, "--json", "--quiet"]
    told = json.loads(subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout)
    return time.monotonic() - started, told["seconds"], told["cycles"]


def compare(window, ventoctl, *options):
    times = {"page": [], "ventoctl, the run": [], "ventoctl, the process": []}
    for _ in range(ROUNDS):
        process, run, cycles = console_seconds(ventoctl, *options)
        for name, seconds in zip(times, (window.evaluate(RUN), run, process)):
            times[name].append(seconds)
    tell(times, cycles)


def tell(times, exchanges):
    for what, seconds in times.items():
        median, least = (1000 * each for each in (statistics.median(seconds), min(seconds)))
        print(f"{what:24} {median:8.1f} ms, {least:8.1f} at the least, {least / exchanges:.3f} an exchange", flush=True)


def on_the_simulator(page, programs, folder):
    (folder / "scenario.json").write_text('{"reportMicroseconds": 0}')
    with Window(page, folder, EXAMPLE.name, simulate="scenario.json") as window:
        compare(window, programs / "ventoctl", f"--simulate={folder / 'scenario.json'}")
        browser().call("Target.createTarget", url="about:blank", browserContextId=window.context)
        cycles = console_seconds(programs / "ventoctl", f"--simulate={folder / 'scenario.json'}")[2]
        tell({"page behind another tab": [window.evaluate(RUN) for _ in range(ROUNDS)]}, cycles)
        assert window.evaluate("document.hidden")


def on_devices(page, programs, folder):
    import page_test
    from kernel_devices import DeviceManager, Simulator, hidraw_nodes

    manager = DeviceManager()
    # Without a window, as what a screen takes is not the question, and compiling as browsers do.
    page_test.BROWSER = [each for each in page_test.BROWSER if "js-flags" not in each] + ["--headless=new"]
    page_test.start_browser()
    window = Window(page, folder, EXAMPLE.name, simulate="", tab=browser().first_tab(), address=page.as_uri())
    for options in ((), ("--gadget",)):
        with Simulator(programs / "vento-simulator", {"interfaces": [page_test.TRANSMITTER], "reportMicroseconds": 0}, *options):
            subprocess.run(["udevadm", "settle"], check=True)
            os.chmod(hidraw_nodes()[0], 0o666)
            eventually(lambda: window.text("linkText") == "Trasmettitore: collegato", "the transmitter")
            print("on USB" if options else "on uhid")
            compare(window, programs / "ventoctl")
    manager.stop()


def main(page, programs, device=""):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        folder.chmod(0o755)
        (folder / EXAMPLE.name).write_bytes(EXAMPLE.read_bytes())
        (on_devices if device else on_the_simulator)(pathlib.Path(page).resolve(), pathlib.Path(programs), folder)


main(*sys.argv[1:])
