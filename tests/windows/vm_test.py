#!/usr/bin/env python3
"""ventoctl.exe under Wine against HID devices of the kernel; inside the virtual machine, as root.

vm_test.py WINDOWS-BIN NATIVE-BIN: the folders of either system's programs. What the native program comes to with a
device, and each of its reports, is what the Windows program has to come to with one that is the same.
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

from kernel_devices import BentTransmitter, Simulator, good_reply, is_poll, wait_for

WINDOWS, NATIVE = (pathlib.Path(folder) for folder in sys.argv[1:3])
PROGRAMS = {"native": [NATIVE / "ventoctl"], "Windows": ["wine", WINDOWS / "ventoctl.exe"]}
SIMULATOR = NATIVE / "vento-simulator"
LIMIT = 280  # seconds for one program

KEYBOARD = {"vendorId": 0x046D, "productId": 0xC31C}
FIRST_KIND = {"vendorId": 1240, "productId": 83}
SECOND_KIND = {"vendorId": 11025, "productId": 1}


def restart_wine():
    """A Windows system that starts takes stock of the devices there are."""
    for argument in ("-k", "-w"):
        subprocess.run(["wineserver", argument], stderr=subprocess.DEVNULL)


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
        return self._trace.read_text().splitlines()

    def outcome(self) -> dict:
        status = self._process.wait(timeout=LIMIT)
        answer = json.loads((self._place / "out").read_text())
        answer.pop("seconds", None)
        return {**answer, "status": status, "stderr": (self._place / "err").read_text()}


class WindowsInTheMachine(unittest.TestCase):
    maxDiff = 2000

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        lines = []
        for column in (1, 2, 3):
            for version in "AB":
                codes = [ord(letter) + 128 for letter in f"PROVA {column}{version}"] + list(range(250))
                lines.append(f"{column};Prova {column};{','.join(map(str, codes))};x;y\n")
        (self.folder / "VENTO-prova.qlb").write_text("".join(lines))

    def run_in_turn(self, *arguments) -> dict:
        """The outcome, which has to be the same and to be come to by the same steps."""
        native = Run(self.folder, "native", *arguments)
        outcome = native.outcome()
        windows = Run(self.folder, "Windows", *arguments)
        self.assertEqual(windows.outcome(), outcome)
        self.assertEqual(windows.steps(), native.steps())
        return outcome

    def test_either_kind_is_programmed_and_read_back_behind_foreign_devices(self):
        for kind in (FIRST_KIND, SECOND_KIND):
            scenario = {"interfaces": [KEYBOARD, KEYBOARD, kind], "reportMicroseconds": 0}
            with self.subTest(kind=kind), Simulator(SIMULATOR, scenario):
                restart_wine()
                self.assertEqual(self.run_in_turn("program", "VENTO-prova.qlb")["result"], 0)
                self.assertIn("DTT PROVA 2B", self.run_in_turn("read")["message"])
                interfaces = Run(self.folder, "Windows", "devices").outcome()["interfaces"]
                self.assertGreater(len(interfaces), 2)
                self.assertEqual([each["vendorId"] for each in interfaces if each["taken"]], [kind["vendorId"]])

    def test_without_a_device_none_is_found(self):
        restart_wine()
        self.assertEqual(self.run_in_turn("program", "VENTO-prova.qlb")["status"], 2)

    def test_a_device_that_goes_in_the_middle_ends_the_run(self):
        ends = []
        for system in PROGRAMS:
            with Simulator(SIMULATOR, {"interfaces": [FIRST_KIND], "reportMicroseconds": 2000}):
                restart_wine()
                run = Run(self.folder, system, "program", "VENTO-prova.qlb")
                wait_for(lambda run=run: len(run.steps()) > 120)  # among the blocks of the first section
            ends.append(run.outcome())
        self.assertNotEqual(ends[0]["result"], 0)
        for key in ("result", "message", "status", "progressBar", "programButton"):
            self.assertEqual(ends[1][key], ends[0][key], key)

    def test_a_device_that_answers_no_more_fails_the_step(self):
        with BentTransmitter(lambda frame: good_reply(frame) if is_poll(frame) else []):
            restart_wine()
            self.assertEqual(self.run_in_turn("read")["result"], 12)

    def test_a_device_that_never_answers_is_given_up(self):
        with BentTransmitter(lambda frame: []):
            restart_wine()
            native, windows = (Run(self.folder, system, "read") for system in PROGRAMS)
            ends = [run.outcome() for run in (native, windows)]
        for end in ends:
            end.pop("cycles")  # a second each, and as many as there was time for
        self.assertEqual(ends[1], ends[0])
        self.assertEqual(ends[0]["result"], 3)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
