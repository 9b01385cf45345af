#!/usr/bin/env python3
"""ventoctl.exe under Wine against HID devices of the kernel; inside the virtual machine, as root.

vm_test.py WINDOWS-BIN NATIVE-BIN: the folders of either system's programs. What the native program comes to with a
device, and each of its reports, is what the Windows program has to come to with one that is the same. Polls are not
counted: the emulated machine may stand still for long enough that one of them fails.
"""

import itertools
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from kernel_devices import BentTransmitter, Simulator, good_reply, is_poll, wait_for, write_programme

WINDOWS, NATIVE = (pathlib.Path(folder) for folder in sys.argv[1:3])
PROGRAMS = {"native": [NATIVE / "ventoctl"], "Windows": ["wine", WINDOWS / "ventoctl.exe"]}
SIMULATOR = NATIVE / "vento-simulator"
LIMIT = 280  # seconds for one program

KEYBOARD = {"vendorId": 0x046D, "productId": 0xC31C}
TRANSMITTER = {"vendorId": 1240, "productId": 83}


class Run:
    """One of the programs at work. What it says goes into files: Wine's helpers would keep a pipe open."""

    def __init__(self, folder: pathlib.Path, system: str, *arguments: str):
        self._place = pathlib.Path(tempfile.mkdtemp(dir=folder))
        self._trace = self._place / "trace"
        self._trace.touch()
        command = [*PROGRAMS[system], *arguments, "--json", "--quiet", "--language", "ita", "--trace", self._trace]
        with open(self._place / "out", "wb") as out, open(self._place / "err", "wb") as err:
            self._process = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=out, stderr=err)

    def steps(self) -> list[str]:
        """Those of the trace, without what differs from system to system: times, and the numbers of errors."""
        own = r'"seconds":[0-9.]+,|,"error":[0-9]+'
        return [re.sub(own, "", line) for line in self._trace.read_text().splitlines()]

    def sent(self) -> list[str]:
        """The reports in turn, each run of the same ones once."""
        steps = [json.loads(line) for line in self.steps()]
        return [report for report, _ in itertools.groupby(step["report"] for step in steps if step["event"] == "write")]

    def stop(self) -> None:
        self._process.kill()
        self._process.wait()

    def outcome(self) -> dict:
        status = self._process.wait(timeout=LIMIT)
        answer = json.loads((self._place / "out").read_text())
        for measure in ("seconds", "cycles"):
            answer.pop(measure, None)
        return {**answer, "status": status, "stderr": (self._place / "err").read_text()}


def start_wine_anew(folder: pathlib.Path):
    """A Windows system that starts takes stock of the devices there are, which goes on when it has started. Dear."""
    for argument in ("-k", "-w"):
        subprocess.run(["wineserver", argument], stderr=subprocess.DEVNULL)
    wait_for(lambda: any(each["taken"] for each in Run(folder, "Windows", "devices").outcome()["interfaces"]))


class WindowsInTheMachine(unittest.TestCase):
    maxDiff = 2000

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        write_programme(self.folder / "VENTO-prova.qlb", 250)

    def run_in_turn(self, *arguments) -> dict:
        """The outcome, which has to be the same and to be come to by the same reports."""
        native = Run(self.folder, "native", *arguments)
        outcome = native.outcome()
        windows = Run(self.folder, "Windows", *arguments)
        self.assertEqual(windows.outcome(), outcome)
        self.assertEqual(windows.sent(), native.sent())
        return outcome

    def half_way(self, system: str) -> Run:
        """A run that is about to write blocks of the first section."""
        run = Run(self.folder, system, "program", "VENTO-prova.qlb")
        wait_for(lambda: len(run.steps()) > 120)
        return run

    def test_a_device_behind_foreign_ones_is_used_goes_in_the_middle_and_is_missed(self):
        scenario = {"interfaces": [KEYBOARD, KEYBOARD, TRANSMITTER], "reportMicroseconds": 2000}
        with Simulator(SIMULATOR, scenario):
            native = self.half_way("native")
        with Simulator(SIMULATOR, scenario):
            start_wine_anew(self.folder)
            self.assertEqual(self.run_in_turn("program", "VENTO-prova.qlb")["result"], 0)
            self.assertIn("DTT PROVA 2B", self.run_in_turn("read")["message"])
            interfaces = Run(self.folder, "Windows", "devices").outcome()["interfaces"]
            self.assertGreater(len(interfaces), 2)
            taken = [each["vendorId"] for each in interfaces if each["taken"]]
            self.assertEqual(taken, [TRANSMITTER["vendorId"]])
            windows = self.half_way("Windows")
        wanted, got = native.outcome(), windows.outcome()
        self.assertNotEqual(wanted["result"], 0)
        for key in ("result", "message", "status", "programButton"):
            self.assertEqual(got[key], wanted[key], key)
        self.assertEqual(self.run_in_turn("program", "VENTO-prova.qlb")["status"], 2)

    def first_polls(self, system: str) -> list[str]:
        """The steps of a read from a device that never answers, to the end of its third poll; then it is stopped."""
        run = Run(self.folder, system, "read")
        reads = wait_for(lambda: (found := [i for i, step in enumerate(run.steps()) if '"read"' in step])[2:] and found)
        run.stop()
        return run.steps()[: reads[2] + 1]

    def test_a_device_that_answers_no_more_fails_the_step_and_one_that_never_does_each_poll(self):
        answers_polls = True
        with BentTransmitter(lambda frame: good_reply(frame) if is_poll(frame) and answers_polls else []):
            start_wine_anew(self.folder)
            self.assertEqual(self.run_in_turn("read")["result"], 12)
            answers_polls = False
            native, windows = map(self.first_polls, PROGRAMS)
        self.assertEqual(windows, native)
        self.assertEqual(sum('"ok":false' in step for step in native), 3)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
