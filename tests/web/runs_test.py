#!/usr/bin/env python3
"""runs_test.py MODULE VENTOCTL NODE...: random programmes go into random simulated remotes, with faults, and remotes are
read, through the page's module and through ventoctl: the same reports, the same result, the same words. RUNS says how many
there are, SEED which is the first."""

import collections
import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile

MODULE, VENTOCTL, *NODE = sys.argv[1:]
RUNS, SEED = int(os.environ.get("RUNS", "60")), int(os.environ.get("SEED", "1"))
NOT_FOUND = "No transmitter was found."  # which ventoctl adds to the box that says so


def programme(chance):
    """Some columns or all, nearly all of them with labels and lists that are right."""
    def code_list():
        codes = chance.choices(range(256), k=chance.choice((1, 8, 31, 62, 63, 64, 126, 200, 300)))
        return ",".join(map(str, codes)) + chance.choice(("",) * 120 + (",256", ",x", ",", ",+1"))

    columns = chance.sample("123", chance.choice((1, 2, 3, 3)))
    labels = ("Label",) * 30 + ("Città", " ")
    lines = (f"{column};{chance.choice(labels)};{code_list()};x;y\n" for column in columns for _ in "AB")
    return "".join(lines).encode("cp1252")


def fault(chance):
    kind, more = chance.choice((
        ("unplugged", {"when": chance.choice(("open", "write", "read"))}), ("refused", {}), ("readFails", {}),
        ("writeFails", {"report": chance.choice((1, 2))}), ("status", {"value": chance.randrange(256)}),
        ("reply", {"bytes": chance.choices(range(256), k=chance.choice((1, 9, 64)))}),
        ("flip", {"byte": chance.randrange(12), "mask": chance.randrange(256)}),
    ))  # fmt: skip
    first = chance.choice((chance.randrange(1, 40), chance.randrange(1, 150)))
    # A wait without a transmitter takes its time, so it is never long.
    through = first + chance.choice((0, 1) if kind in ("unplugged", "refused") else (0, 0, 1, 3, 30))
    return {"cycle": first, "through": through, "kind": kind, **more}


def scenario(chance):
    transmitter = {"vendorId": chance.choice((1240, 1240, 11025)), "productId": chance.randrange(65536), "opens": chance.random() > 0.02}
    offsets = chance.choice(([256, 4352, 8448], [256, 4352, 8448], [0, 100, 65000], [8448, 256, 300], [256], []))
    remote = {
        "version": chance.choice((196, 2, 0, 3, chance.randrange(256))), "sections": offsets,
        "memory": {str(offset): chance.choices(range(193, 219), k=8) for offset in offsets},
        "free": 16 * chance.randrange(8), "arrivesAtPoll": chance.choice((1, 1, 1, chance.randrange(1, 300))),
    }  # fmt: skip
    return {
        "interfaces": chance.choice(([transmitter], [transmitter], [{"vendorId": 4660}, transmitter])) if chance.random() > 0.02 else [],
        "remote": remote if chance.random() > 0.01 else None, "reportMicroseconds": 0,
        "faults": [fault(chance) for _ in range(chance.choice((0, 1, 1, 2, 4)))],
    }  # fmt: skip


def steps(trace):
    """The lines of a trace without their times."""
    return [{key: value for key, value in json.loads(line).items() if key != "seconds"} for line in trace.splitlines()]


def words(text):
    return "\n".join(line.rstrip() for line in (text or "").splitlines()).strip()


def through_ventoctl(case, folder):
    trace = folder / "trace.jsonl"
    command = ["program", case["programme"]] if case["programme"] else ["read"]
    done = subprocess.run(
        [VENTOCTL, *command, f"--simulate={case['scenario']}", "--json", "--language=en", f"--trace={trace}"],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=200, check=False,
    )  # fmt: skip
    told = json.loads(done.stdout)
    bar = told["progressBar"]
    return {
        "boxes": [[told["messageBox"], words(told["diagnostic"])]] if told["messageBox"] else [],
        "code": told["result"] if told["text1"] != "Text1" else None,
        "status": words(told["message"]),
        "diagnostic": words(told["diagnostic"]) if told["result"] and not told["messageBox"] else "",
        "bar": [bar["value"], bar["maximum"]],
        "steps": steps(trace.read_text()),
    }


def through_module(answer, expected):
    view = answer["view"]
    control = {each["id"]: each for each in view["controls"]}
    details = words(view["details"])
    diagnostic = expected["diagnostic"]
    return {
        "boxes": [[box["text"], words(box["detail"]) or NOT_FOUND] for box in answer["boxes"]],
        "code": view["code"],
        "status": words(control["Label1"]["text"]),
        "diagnostic": diagnostic if details.startswith(diagnostic) else details,
        "bar": [control["ProgressBar1"]["value"], control["ProgressBar1"]["largest"]],
        "steps": steps(answer["trace"]),
    }


def make_cases(folder):
    for seed in range(SEED, SEED + RUNS):
        chance = random.Random(seed)
        place, file = folder / f"scenario-{seed}.json", folder / f"VENTO-{seed}.qlb"
        place.write_text(json.dumps(scenario(chance)))
        file.write_bytes(programme(chance))
        yield {"scenario": str(place), "programme": str(file) if chance.random() < 0.8 else None}


def main():
    results = collections.Counter()
    with tempfile.TemporaryDirectory(prefix="vento-runs-") as name:
        folder = pathlib.Path(name)
        cases = list(make_cases(folder))
        runs = pathlib.Path(__file__).with_name("runs.mjs")
        module = subprocess.run([*NODE, runs, MODULE], input="".join(json.dumps(case) + "\n" for case in cases), text=True,
                                stdout=subprocess.PIPE, timeout=3600, check=True)
        answers = [json.loads(line) for line in module.stdout.split("\n") if line]
        for seed, (case, answer) in enumerate(zip(cases, answers, strict=True), SEED):
            expected = through_ventoctl(case, folder)
            found = through_module(answer, expected)
            results[expected["code"]] += 1
            for key, value in expected.items():
                if found[key] != value:
                    pathlib.Path("differing-run.json").write_text(json.dumps([seed, case, expected, found]))
                    sys.exit(f"seed {seed}: {key} is {str(found[key])[:800]}\nand by ventoctl {str(value)[:800]}")
    print(f"{RUNS} runs from seed {SEED} on are alike; results and how often: {dict(results)}")


main()
