#!/usr/bin/env python3
"""The window of Qt on HID devices of the kernel that come and go; inside the virtual machine, as root.

window_test.py BIN: BIN is the folder of the programs.
"""

import ctypes
import os
import pathlib
import subprocess
import sys
import unittest

os.environ["VENTO_PATIENCE"] = "4"
sys.path.insert(1, str(pathlib.Path(__file__).resolve().parents[1] / "window"))

import common
import harness
from common import eventually
from kernel_devices import Simulator, hidraw_nodes

KEYBOARD, TRANSMITTER = {"vendorId": 0x046D, "productId": 0xC31C}, {"vendorId": 11025, "productId": 1}
USB = ("--gadget", "--keyboard")  # a keyboard of the same vendor is the transmitter's first interface
SUCCESS, WAITING, READ = "Programmazione eseguita con successo", "Posizionare il telecomando", "Leggi Programmazione"
PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH = 24, 1, 2


def give_up_rights():
    """From the next program on, root may open only what the permissions of a file allow."""
    for right in (CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH):
        ctypes.CDLL(None).prctl(PR_CAPBSET_DROP, right, 0, 0, 0)


class HotPlug(common.Case):
    def simulator(self, *options, **keys):
        scenario = {"interfaces": ([] if options else [KEYBOARD]) + [TRANSMITTER], "reportMicroseconds": 0} | keys
        return Simulator(SIMULATOR, scenario, *options)

    def await_link(self, state):
        for caption in ("PROGRAMMA", READ):
            eventually(lambda: self.shown.description(caption).endswith(f"Trasmettitore: {state}"), f"that it is {state}")

    def press(self, caption, status):
        """What it leads to has to differ from what the status line held before."""
        self.shown.press(caption)
        self.shown.await_status(status)

    def test_the_window_says_at_once_what_has_become_of_the_transmitter(self):
        self.shown = self.open(self.programme(length=30), simulate="", prepare=give_up_rights)
        self.await_link("non collegato")
        for options in ((), USB):
            with self.simulator(*options):
                self.await_link("collegato")
                self.press("PROGRAMMA", SUCCESS)
                transmitter = hidraw_nodes()[-1]
                os.chmod(transmitter, 0)
                self.await_link("collegato, ma non hai il permesso di usarlo")
                self.shown.press("PROGRAMMA")
                eventually(lambda: "60-vento.rules" in "".join(self.shown.box()), "what to do about it")
                self.shown.answer()
                os.chmod(transmitter, 0o600)
                self.await_link("collegato")
                self.press(READ, "TV PROVA-01")
            self.await_link("non collegato")

    def test_another_program_that_uses_it_is_seen_and_an_unplugged_one_taken_again(self):
        self.shown = self.open(self.programme(length=30), simulate="")
        with self.simulator(remote=None):
            other = subprocess.Popen([CTL, "read", "--quiet"], stdout=subprocess.DEVNULL)
            self.await_link("in uso da un altro programma")
            other.terminate()
            other.wait()
            self.await_link("collegato")
            self.press("PROGRAMMA", WAITING)
            self.shown.key("Escape")
            self.shown.await_status("annullata")
        fault = {"cycle": 20, "kind": "unplugged", "when": "write", "forMilliseconds": 200}
        for options in ((), USB):
            with self.simulator(*options, faults=[fault]) as simulator:
                self.await_link("collegato")
                self.shown.press("PROGRAMMA")
                simulator.wait_for_line("unplugged")
                eventually(lambda: self.shown.enabled("APRI") and "Ora no" not in self.shown.description("APRI"), "the end")
                if self.shown.shows_a_dialog():
                    self.shown.answer()
                self.await_link("collegato")
                self.press("PROGRAMMA", SUCCESS)


if __name__ == "__main__":
    harness.inside_a_desktop()
    folder = pathlib.Path(sys.argv.pop(1))
    CTL, SIMULATOR = folder / "ventoctl", folder / "vento-simulator"
    common.Case.window, common.Case.program = harness.Window, folder / "vento"
    unittest.main(verbosity=2)
