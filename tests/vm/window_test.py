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

SCENARIO = {"interfaces": [{"vendorId": 11025, "productId": 1}], "reportMicroseconds": 0}
CUT_OFF = {"faults": [{"cycle": 20, "kind": "unplugged", "when": "write", "forMilliseconds": 200}]}
SUCCESS, WAITING = "Programmazione eseguita con successo", "Posizionare il telecomando"


def give_up_rights():
    """From the next program on, root may open only what the permissions of a file allow."""
    for right in (1, 2):  # CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH
        ctypes.CDLL(None).prctl(24, right, 0, 0, 0)  # PR_CAPBSET_DROP


class HotPlug(common.Case):
    def await_link(self, state):
        for caption in ("PROGRAMMA", "Leggi Programmazione"):
            eventually(lambda: self.shown.description(caption).endswith(f"Trasmettitore: {state}"), f"that it is {state}")

    def run_to(self, status):
        self.shown.press("PROGRAMMA")
        self.shown.await_status(status)

    def test_the_window_says_at_once_what_has_become_of_the_transmitter(self):
        self.shown = self.open(self.programme(length=30), simulate="", prepare=give_up_rights)
        for options in ((), ("--gadget", "--keyboard")):  # on USB behind a keyboard of the same vendor
            self.await_link("non collegato")
            with Simulator(SIMULATOR, SCENARIO | {"remote": None}, *options):
                with subprocess.Popen([CTL, "read", "--quiet"], stdout=subprocess.DEVNULL) as other:
                    self.await_link("in uso da un altro programma")
                    other.terminate()
                self.await_link("collegato")
                os.chmod(hidraw_nodes()[-1], 0)
                self.await_link("collegato, ma non hai il permesso di usarlo")
                self.shown.press("PROGRAMMA")
                eventually(lambda: "60-vento.rules" in "".join(self.shown.box()), "what to do about it")
                self.shown.answer()
                os.chmod(hidraw_nodes()[-1], 0o600)
                self.await_link("collegato")
                self.run_to(WAITING)
                self.shown.key("Escape")
                self.shown.await_status("annullata")
            self.await_link("non collegato")
            with Simulator(SIMULATOR, SCENARIO | CUT_OFF, *options) as simulator:
                self.await_link("collegato")
                self.shown.press("PROGRAMMA")
                simulator.wait_for_line("unplugged")
                eventually(lambda: "Ora no" not in self.shown.description("APRI"), "the end")
                if self.shown.shows_a_dialog():
                    self.shown.answer()
                self.await_link("collegato")
                self.run_to(SUCCESS)


if __name__ == "__main__":
    harness.inside_a_desktop()
    folder = pathlib.Path(sys.argv.pop(1))
    CTL, SIMULATOR = folder / "ventoctl", folder / "vento-simulator"
    common.Case.window, common.Case.program = harness.Window, folder / "vento"
    unittest.main(verbosity=2)
