#!/usr/bin/env python3
"""The page in Chromium, beside ventoctl, on HID devices of the kernel; inside the virtual machine, as root.

page_test.py BIN VENTO.HTML: BIN is the folder of the programs.
"""

import atexit
import contextlib
import grp
import json
import os
import pathlib
import subprocess
import sys
import time
import unittest

os.environ["VENTO_PATIENCE"] = "4"
sys.path.insert(1, str(pathlib.Path(__file__).resolve().parents[1] / "window"))

import common
import web
from common import eventually
from kernel_devices import BentTransmitter, DeviceManager, Simulator, hidraw_nodes, wait_for

SUCCESS, WAITING, READ = "Programmazione eseguita con successo", "Posizionare il telecomando", "Leggi Programmazione"
KEYBOARD, TRANSMITTER = {"vendorId": 0x046D, "productId": 0xC31C}, {"vendorId": 11025, "productId": 1}
USB = ("--gadget", "--keyboard")  # a keyboard of the same vendor is the transmitter's first interface
NOBODY = 65534
RULE = pathlib.Path("/etc/udev/rules.d/60-vento.rules")
GRANTED = {"WebHidAllowDevicesForUrls": [{"devices": [{"vendor_id": 1240}, {"vendor_id": 11025}], "urls": ["file:///*"]}]}
# What is compiled is used too seldom here to be worth it, where a machine is emulated.
BROWSER = ("--window-position=0,0", "--window-size=1000,740", "--disable-software-rasterizer", "--disable-extensions",
           "--disable-sync", "--disable-background-networking", "--disable-component-update", "--disable-breakpad", "--test-type",
           "--js-flags=--no-sparkplug,--no-maglev,--no-turbofan,--liftoff-only")
PROMPT = {"its first device": (240, 175), "Connect": (507, 511)}  # where its mouse finds them in the browser's window


def reports(trace):
    return [each["report"] for each in map(json.loads, trace.splitlines()) if each["event"] in ("write", "read") and each["ok"]]


def start_browser():
    """Chromium with a window, as a user in the group plugdev, on a screen of its own. file: pages have the transmitters granted by policy."""
    place = pathlib.Path("/etc/chromium/policies/managed/vento.json")
    place.parent.mkdir(parents=True, exist_ok=True)
    place.write_text(json.dumps(GRANTED))
    os.environ["DISPLAY"] = ":7"
    for command in (["Xvfb", ":7", "-screen", "0", "1000x740x24", "-nolisten", "tcp"], ["openbox"]):
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        atexit.register(process.wait)
        atexit.register(process.terminate)
        wait_for(pathlib.Path("/tmp/.X11-unix/X7").exists)
    group = grp.getgrnam("plugdev").gr_gid
    web.Browser.PREFIX = ("setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", f"--groups={group}")
    web.Browser.EXECUTABLE, web.Browser.OPTIONS = "/usr/lib/chromium/chromium", BROWSER
    web.browser()


def click(x, y):
    """A click of the screen's own mouse, which gets to what is the browser's and not the page's."""
    from Xlib import X, display
    from Xlib.ext import xtest

    screen = display.Display()
    xtest.fake_input(screen, X.MotionNotify, x=x, y=y)
    for kind in (X.ButtonPress, X.ButtonRelease):
        xtest.fake_input(screen, kind, 1)
    screen.sync()
    screen.close()


class OnKernelDevices(common.Case):
    @classmethod
    def setUpClass(cls):
        cls.addClassCleanup(DeviceManager().stop)
        start_browser()

    def setUp(self):
        super().setUp()
        self.folder.chmod(0o777)

    def page(self, address=None):
        self.window = self.open(self.programme(length=30), simulate="", tab=web.browser().first_tab(),
                                address=address or pathlib.Path(self.program).as_uri())
        return self.window

    @contextlib.contextmanager
    def simulator(self, *options, **keys):
        scenario = {"interfaces": ([] if options else [KEYBOARD]) + [TRANSMITTER], "reportMicroseconds": 0} | keys
        with Simulator(SIMULATOR, scenario, *options) as simulator:
            subprocess.run(["udevadm", "settle"], check=True)
            yield simulator

    def permit(self):
        RULE.write_bytes((ROOT / "packaging/linux/60-vento.rules").read_bytes())
        subprocess.run(["udevadm", "control", "--reload"], check=True)

    def await_link(self, state):
        eventually(lambda: self.window.text("linkText").startswith(f"Trasmettitore: {state}"), f"that it is {state}")

    def await_end(self):
        eventually(lambda: self.window.shows_a_dialog() or not self.window.evaluate("document.body.classList.contains('operating')"),
                   "the end")
        if self.window.shows_a_dialog():
            self.window.answer()

    def await_outcome(self, message):
        status = lambda: self.window.box() if self.window.shows_a_dialog() else self.window.status().split()
        with contextlib.suppress(AssertionError):
            eventually(lambda: status() == message.split(), message)
        self.assertEqual(status(), message.split())

    def test_who_may_not_open_it_is_handed_what_permits_it(self):
        RULE.unlink(missing_ok=True)
        window = self.page()
        with self.simulator():
            self.await_link("collegato")
            window.press(READ)
            self.assertEqual(window.box()[0], "Programmatore non collegato")
            window.answer()
            (self.folder / RULE.name).write_text(window.saved("Salva 60-vento.rules"))
            for command in window.evaluate("[...document.querySelectorAll('#steps li:first-child code')].map(e => e.textContent)"):
                subprocess.run(command.replace("sudo ", ""), shell=True, cwd=self.folder, check=True)
            subprocess.run(["udevadm", "settle"], check=True)
            window.press(READ)
            window.await_status("TV")
            self.assertEqual(os.stat(hidraw_nodes()[0]).st_mode & 0o066, 0, "the keyboard stays closed")

    def test_programs_and_reads_with_the_reports_of_ventoctl(self):
        self.permit()
        trace = self.folder / "trace.jsonl"
        window = self.page()
        for options in ((), USB):
            with self.simulator(*options):
                self.await_link("collegato")
                for caption, *command in (("PROGRAMMA", "program", self.folder / "VENTO-prova.qlb"), (READ, "read")):
                    told = subprocess.run([CTL, *command, "--trace", trace, "--json", "--quiet", "--language", "ita"],
                                          stdout=subprocess.PIPE, check=True)
                    window.press(caption)
                    self.await_outcome(json.loads(told.stdout)["message"])
                    self.assertEqual(reports(window.saved("Salva la traccia")), reports(trace.read_text()), (options, command))
            self.await_link("scollegato")

    def test_the_prompt_is_answered_by_the_mouse(self):
        self.permit()
        window = self.page(web.site(str(pathlib.Path(self.program).parent)) + "/vento.html")
        with self.simulator():
            self.assertIn("non ancora scelto", window.text("linkText"))
            window.press("PROGRAMMA")

            def answered():
                for place in PROMPT.values():
                    time.sleep(3)  # a prompt takes no click that comes too soon
                    click(*place)
                return SUCCESS in window.status()
            eventually(answered, "the prompt and the run")

    def test_unplugged_at_any_point_it_ends_and_goes_on_when_it_is_back(self):
        self.permit()
        window = self.page()
        for cycle, when, *options in (
            (4, "open"), (8, "read"), (20, "write"), (25, "read"), (8, "read", *USB), (20, "write", *USB),
        ):
            fault = {"cycle": cycle, "kind": "unplugged", "when": when, "forMilliseconds": 200}
            with self.subTest(fault=fault, options=options), self.simulator(*options, faults=[fault]) as simulator:
                self.await_link("collegato")
                window.press("PROGRAMMA")
                simulator.wait_for_line("unplugged")
                simulator.wait_for_line("dummy_udc" if options else "/dev/hidraw", times=2 if options else 3)
                self.await_end()
                self.await_link("collegato")
                self.assertIsNone(window.bar())
                window.evaluate("document.getElementById('Label1').textContent = ''")
                window.press("PROGRAMMA")
                self.await_outcome(SUCCESS)
        self.assertEqual(window.told("Runtime.exceptionThrown"), [])

    def test_one_that_is_gone_or_mute_can_be_waited_for_no_longer(self):
        self.permit()
        window = self.page()
        with BentTransmitter(lambda frame: []):
            self.await_link("collegato")
            window.press(READ)
            window.await_status(WAITING)
            time.sleep(3)  # for some polls, each of which takes a second
            self.assertIn(WAITING, window.status())
        for end in ("wait", "transfer"):
            if end == "transfer":
                with self.simulator(reportMicroseconds=20000):
                    self.await_link("collegato")
                    window.press("PROGRAMMA")
                    eventually(window.bar, "the bar")
                self.await_end()
            else:
                window.key("Escape")
                window.await_status("annullata")
            self.await_link("scollegato")


if __name__ == "__main__":
    folder = pathlib.Path(sys.argv.pop(1))
    ROOT = pathlib.Path(__file__).resolve().parents[2]
    CTL, SIMULATOR = folder / "ventoctl", folder / "vento-simulator"
    common.Case.window, common.Case.program = web.Window, os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
