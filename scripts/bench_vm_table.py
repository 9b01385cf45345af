#!/usr/bin/env python3
"""bench_vm_table.py RESULTS DOCUMENT: puts the tables of scripts/bench-vm between their marks in the document.

RESULTS is a list: what program_run.py printed, then four outputs of hid_exchange_bench in JSON, on uhid with 1 and with 8
foreign interfaces and on USB likewise.
"""

import json
import pathlib
import sys

BEGIN, END = "<!-- scripts/bench-vm writes from here -->\n", "<!-- to here -->\n"
EXCHANGES = {
    "floor": "one descriptor, opened once: write and read",
    "calls": "the system calls of a cycle, with one descriptor held beside",
    "own": "VENTO: `ExchangeReports` in a conversation",
    "unheld": "VENTO with nothing held",
    "hidapi": "libhidapi-hidraw: enumerate, open, write, read, close",
}
RUNS = {
    "floor": "its {} reports and their replies, over one descriptor opened once",
    "ventoctl": "`ventoctl program`, the whole process",
    "start": "… of which `ventoctl version` takes",
    "reopened": "the same reports, with a descriptor opened for each cycle and nothing held",
}


def medians(output: dict) -> dict[str, dict]:
    runs = output["benchmarks"]
    return {run["run_name"].split("/")[0]: run for run in runs if run.get("aggregate_name") == "median"}


def row(what: str, cells: list[str]) -> str:
    return f"| {what} | " + " | ".join(cells) + " |"


def exchanges(outputs: list[dict]) -> list[str]:
    devices = [medians(output) for output in outputs]
    lines = [row("One exchange", ["uhid, 1 foreign interface", "uhid, 8", "USB, 1", "USB, 8"]), "|---" * 5 + "|"]
    for name, what in EXCHANGES.items():
        times = [(run[name]["real_time"], run["floor"]["real_time"]) for run in devices]
        lines.append(row(what, [f"{time / 1e6:,.3f} ms, {time / floor:.2f} ×" for time, floor in times]))
    allocations = max(run["own"]["allocations"] for run in devices)
    return [*lines, "", f"Allocations of the back end: {allocations:g} an exchange."]


def runs(devices: dict) -> list[str]:
    lines = [row("A programming run", ["uhid", "USB"]), "|---" * 3 + "|"]
    for name, what in RUNS.items():
        times = [(devices[device][name], devices[device]["floor"]) for device in ("uhid", "usb")]
        what = what.format(devices["usb"]["reports"])
        lines.append(row(what, [f"{time * 1e3:,.0f} ms, {time / floor:.2f} ×" for time, floor in times]))
    return lines


def main(results: str, document: str) -> None:
    whole, *outputs = json.loads(pathlib.Path(results).read_text())
    text = "\n".join([*runs(whole), "", *exchanges(outputs)])
    path = pathlib.Path(document)
    before, rest = path.read_text().split(BEGIN)
    after = rest.split(END)[1]
    path.write_text(f"{before}{BEGIN}\n{text}\n\n{END}{after}")


main(*sys.argv[1:])
