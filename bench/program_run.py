#!/usr/bin/env python3
"""What a whole programming run takes, beside the same reports over one descriptor: in the virtual machine, as root.

program_run.py BIN: BIN is the folder of the programs. Prints JSON: for a device on uhid and one on USB, medians in
seconds.
"""

import json
import os
import pathlib
import select
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/vm"))
from kernel_devices import Simulator, hidraw_nodes, wait_for  # noqa: E402

ROUNDS = 5
BYTES = 300  # of each list
WORK = pathlib.Path(tempfile.mkdtemp())
SCENARIO = {"interfaces": [{"vendorId": 1240}], "reportMicroseconds": 0}


def seconds(work) -> float:
    started = time.monotonic()
    work()
    return time.monotonic() - started


def replay(steps: list[dict], reopens: bool) -> None:
    """Sends and fetches what a run did, over one descriptor, or over one for each cycle."""
    node = hidraw_nodes()[0]
    device = os.open(node, os.O_RDWR | os.O_NONBLOCK)
    for step in steps:
        if step["event"] == "write":
            os.write(device, step["report"])
        elif step["event"] == "read":
            select.select([device], [], [], 1)
            os.read(device, 65)
        elif step["event"] == "close" and reopens:
            os.close(device)
            device = os.open(node, os.O_RDWR | os.O_NONBLOCK)
    os.close(device)


def measure(options: list[str]) -> dict:
    def ventoctl(*arguments: str) -> None:
        subprocess.run([WORK / "ventoctl", *arguments], stdout=subprocess.DEVNULL, check=True)

    trace, programme = WORK / "trace", WORK / "programme.qlb"
    with Simulator(WORK / "vento-simulator", SCENARIO, *options):
        run = ["program", str(programme), "--quiet"]
        for _ in range(2):  # the second one finds a remote that holds a programme, as all that follow
            ventoctl(*run, "--trace", str(trace))
        steps = [json.loads(line) for line in trace.read_text().splitlines()]
        for step in steps:
            step["report"] = bytes.fromhex(step.get("report") or "")
        works = {
            "ventoctl": lambda: ventoctl(*run),
            "floor": lambda: replay(steps, False),
            "reopened": lambda: replay(steps, True),
            "start": lambda: ventoctl("version"),
        }
        times = {name: [] for name in works}
        for _ in range(ROUNDS):
            for name, work in works.items():
                times[name].append(seconds(work))
    wait_for(lambda: not hidraw_nodes())
    writes = sum(step["event"] == "write" for step in steps)
    return {"reports": writes, **{name: statistics.median(values) for name, values in times.items()}}


def main(programs: str) -> None:
    for program in ("ventoctl", "vento-simulator"):
        shutil.copy(pathlib.Path(programs) / program, WORK)
    lists = ",".join(str(128 + i % 100) for i in range(BYTES))
    lines = [f"{column};Column;{lists};x;y\n" for column in (1, 2, 3) for _ in "AB"]
    (WORK / "programme.qlb").write_text("".join(lines))
    json.dump({"uhid": measure([]), "usb": measure(["--gadget"])}, sys.stdout)


main(*sys.argv[1:])
