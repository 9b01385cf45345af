#!/usr/bin/env python3
"""bench_vm_table.py RESULTS DOCUMENT: puts the table of scripts/bench-vm between its marks in the document.

RESULTS is a list of two outputs of hid_exchange_bench in JSON, with 1 and with 8 foreign interfaces.
"""

import json
import pathlib
import sys

BEGIN, END = "<!-- scripts/bench-vm writes from here -->\n", "<!-- to here -->\n"
ROWS = {
    "floor": "the system calls alone, paths known beforehand",
    "own": "VENTO's back end: `ExchangeReports` on `HidrawHost`",
    "hidapi": "libhidapi-hidraw: enumerate, open, write, read, close",
}


def medians(output: dict) -> dict[str, dict]:
    runs = output["benchmarks"]
    return {run["run_name"].split("/")[0]: run for run in runs if run.get("aggregate_name") == "median"}


def table(outputs: list[dict]) -> str:
    one, eight = map(medians, outputs)
    lines = ["| Exchanges a second, by what does them | 1 foreign interface | | 8 foreign interfaces | |"]
    lines.append("|---|---|---|---|---|")
    for name, what in ROWS.items():
        cells = []
        for run in (one, eight):
            time = run[name]["real_time"]
            cells += [f"{1e9 / time:,.0f}", f"{time / run['floor']['real_time']:.2f} × the floor's time"]
        lines.append(f"| {what} | " + " | ".join(cells) + " |")
    allocations = max(run["own"]["allocations"] for run in (one, eight))
    lines.append("")
    lines.append(f"Allocations of the back end: {allocations:g} an exchange.")
    return "\n".join(lines) + "\n"


def main(results: str, document: str) -> None:
    outputs = json.loads(pathlib.Path(results).read_text())
    path = pathlib.Path(document)
    before, rest = path.read_text().split(BEGIN)
    after = rest.split(END)[1]
    path.write_text(f"{before}{BEGIN}\n{table(outputs)}\n{END}{after}")


main(*sys.argv[1:])
