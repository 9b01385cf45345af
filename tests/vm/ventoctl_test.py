#!/usr/bin/env python3
"""ventoctl against HID devices of the kernel; inside the virtual machine, as root.

ventoctl_test.py BIN: BIN is the folder of the programs.
"""

import json
import os
import pathlib
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from kernel_devices import (
    BentTransmitter, DeafUsbTransmitter, DeviceManager, LoginManager, Simulator, hidraw_nodes, wait_for, write_programme,
)

WORK = pathlib.Path(tempfile.mkdtemp())
CTL = WORK / "ventoctl"
SIMULATOR = WORK / "vento-simulator"
PROGRAMME = WORK / "VENTO-prova.qlb"
RULES = pathlib.Path(__file__).resolve().parents[2] / "packaging/linux/60-vento.rules"
NOBODY = 65534

KEYBOARD = {"vendorId": 0x046D, "productId": 0xC31C}
FIRST_KIND = {"vendorId": 1240, "productId": 83}
SECOND_KIND = {"vendorId": 11025, "productId": 1}
QUICK = {"reportMicroseconds": 0}
USB = "--gadget"
COMPOSITE = (USB, "--keyboard")  # a keyboard of the same vendor is the transmitter's first interface


def start(*arguments, user: int = 0) -> subprocess.Popen:
    return subprocess.Popen(
        [CTL, *map(str, arguments), "--json", "--quiet", "--language", "eng"],
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, user=user, group=user, extra_groups=[],
    )


class Outcome:
    def __init__(self, process: subprocess.Popen):
        stdout, self.stderr = process.communicate(timeout=30)
        self.status = process.returncode
        self.json = json.loads(stdout)
        self.result = self.json.get("result")


def run(*arguments, user: int = 0) -> Outcome:
    return Outcome(start(*arguments, user=user))


def access(user: int = 0) -> list[str]:
    return [each["access"] for each in run("devices", user=user).json["interfaces"]]


def let_usb_devices_sleep() -> None:
    for device in pathlib.Path("/sys/bus/usb/devices").glob("*/power/autosuspend_delay_ms"):
        device.write_text("0")
        (device.parent / "control").write_text("auto")


class Programming(unittest.TestCase):
    def test_either_kind_behind_foreign_devices_keeps_what_it_is_given(self):
        for kind in (FIRST_KIND, SECOND_KIND):
            image = WORK / f"image-{kind['vendorId']}.json"
            for options, others in (((), [KEYBOARD, KEYBOARD]), (COMPOSITE, [KEYBOARD])):
                scenario = {"interfaces": [*others, kind], "image": str(image), **QUICK}
                image.unlink(missing_ok=True)
                with self.subTest(kind=kind, options=options):
                    with Simulator(SIMULATOR, scenario, *options):
                        let_usb_devices_sleep()
                        self.assertEqual(run("program", PROGRAMME).result, 0)
                        self.assertEqual(access(), ["unknown", "unknown", "ok"])
                    self.assertEqual(json.loads(image.read_text())["free"], 0)
                    with Simulator(SIMULATOR, scenario, *options):
                        self.assertIn("PROVA 2B", run("read").json["message"])


class TwoPrograms(unittest.TestCase):
    def test_the_second_one_is_told_and_the_first_one_is_not_disturbed(self):
        trace = WORK / "trace-first.jsonl"
        for end in (signal.SIGINT, signal.SIGKILL):
            trace.write_text("")
            with Simulator(SIMULATOR, {"interfaces": [FIRST_KIND], "remote": None, **QUICK}, USB):
                first = start("program", PROGRAMME, "--trace", trace)
                wait_for(lambda: trace.read_text().count("close") > 3)
                self.assertEqual(access(), ["busy"])
                second = run("read")
                self.assertEqual(second.status, 2)
                self.assertIn("another VENTO", second.stderr)
                self.assertIsNone(first.poll())
                first.send_signal(end)
                first.communicate()
                self.assertNotRegex(trace.read_text(), '"(ok|found)":false')
                self.assertEqual(access(), ["ok"], "its lock ends with a process, however that ends")


class Awake(unittest.TestCase):
    def test_the_computer_is_kept_awake_as_far_as_it_is_allowed_while_an_operation_runs(self):
        pathlib.Path("/run/systemd/seats").mkdir(parents=True, exist_ok=True)
        manager = LoginManager()
        self.addCleanup(manager.stop)
        os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = manager.address
        self.addCleanup(os.environ.pop, "DBUS_SYSTEM_BUS_ADDRESS")
        with Simulator(SIMULATOR, {"interfaces": [FIRST_KIND], "remote": None, **QUICK}):
            process = start("program", PROGRAMME)
            wait_for(lambda: manager.lock)
            self.assertEqual(select.select([manager.lock], [], [], 0)[0], [], "it is held")
            process.send_signal(signal.SIGINT)
            self.assertEqual(Outcome(process).result, Misbehaviour.CANCELLED)
            self.assertEqual(os.read(manager.lock, 1), b"")
        rest = ("VENTO", "A remote is being programmed or read.", "block")
        self.assertEqual(manager.asked, [("shutdown:sleep:idle", *rest), ("idle", *rest)])


class Access(unittest.TestCase):
    SEAT = 1000

    def is_marked(self, node: str) -> bool:
        return "uaccess" in subprocess.run(["udevadm", "info", node], capture_output=True, text=True).stdout

    def test_the_user_at_the_seat_gets_the_transmitter_and_others_are_told_what_to_do(self):
        seats = pathlib.Path("/run/systemd/seats")
        seats.mkdir(parents=True, exist_ok=True)
        seat = f"IS_SEAT0=1\nACTIVE=1\nACTIVE_UID={self.SEAT}\nSESSIONS=1\nUIDS={self.SEAT}\n"
        (seats / "seat0").write_text(seat)
        shutil.copy(RULES, "/etc/udev/rules.d/")
        self.addCleanup(DeviceManager().stop)
        for interfaces, options in (([KEYBOARD, FIRST_KIND], ()), ([SECOND_KIND], COMPOSITE)):
            scenario = {"interfaces": interfaces, **QUICK}
            with self.subTest(options=options), Simulator(SIMULATOR, scenario, *options):
                keyboard, transmitter = hidraw_nodes()
                subprocess.run(["udevadm", "settle"], check=True)
                wait_for(lambda: self.is_marked(transmitter))
                self.assertFalse(self.is_marked(keyboard))
                wait_for(lambda: os.stat(transmitter).st_mode & 0o060)  # the mask of an access list
                self.assertEqual(os.stat(transmitter).st_mode & 0o007, 0)
                self.assertEqual(os.stat(keyboard).st_mode & 0o077, 0)
                self.assertEqual(run("program", PROGRAMME, user=self.SEAT).result, 0)
                self.assertEqual(access(NOBODY), ["unknown", "forbidden"])
                forbidden = run("read", user=NOBODY)
                self.assertEqual(forbidden.status, 2)
                self.assertIn("60-vento.rules", forbidden.stderr)

    def test_a_number_that_has_gone_to_another_device_is_not_taken(self):
        with Simulator(SIMULATOR, {"interfaces": [KEYBOARD, FIRST_KIND], **QUICK}):
            keyboard, transmitter = hidraw_nodes()
            subprocess.run(["mount", "--bind", keyboard, transmitter], check=True)
            self.assertEqual(access(), ["unknown", "failed"])
            subprocess.run(["umount", transmitter], check=True)
            self.assertEqual(access(), ["unknown", "ok"])


class Unplugging(unittest.TestCase):
    """The kernel tells nobody in advance that a device goes, so several ends are right."""

    STATUSES = {0, 2, 3, 5, 6, 9, 10, 11, 12, 18, 19, 21}

    def test_at_any_point_it_fails_cleanly_and_the_next_run_succeeds(self):
        for cycle, when, *options in (
            (1, "read"), (3, "write"), (8, "open"), (8, "read"), (20, "write"),
            (1, "open", USB), (8, "read", USB), (20, "write", USB),
        ):
            fault = {"cycle": cycle, "kind": "unplugged", "when": when, "forMilliseconds": 200}
            scenario = {"interfaces": [KEYBOARD, FIRST_KIND], "faults": [fault], **QUICK}
            subtest = self.subTest(cycle=cycle, when=when, options=options)
            with subtest, Simulator(SIMULATOR, scenario, *options) as simulator:
                outcome = run("program", PROGRAMME)
                self.assertIn(outcome.status, self.STATUSES)
                self.assertFalse(outcome.json["progressBar"]["visible"])
                simulator.wait_for_line("dummy_udc" if options else "/dev/hidraw", times=3)
                wait_for(lambda: sorted(access()) == ["ok", "unknown"])
                self.assertIn(f"unplugged at frame {cycle}", simulator.lines)
                self.assertEqual(run("program", PROGRAMME).result, 0)


class Misbehaviour(unittest.TestCase):
    CANCELLED = 13

    def test_a_transmitter_that_never_answers_is_given_a_second_at_each_poll_until_the_operator_cancels(self):
        def open_files():
            return len(os.listdir(f"/proc/{process.pid}/fd"))

        trace = WORK / "trace.jsonl"
        trace.touch()
        with BentTransmitter(lambda frame: []):
            process = start("read", "--trace", trace)
            self.addCleanup(process.kill)  # it would hold the next test's transmitter
            wait_for(lambda: trace.read_text().count("close") > 3)  # two searches and the timing come first
            before, started = open_files(), time.monotonic()
            wait_for(lambda: trace.read_text().count("close") > 7)
            self.assertGreater(time.monotonic() - started, 3)
            self.assertLess(open_files(), before + 3)  # four polls would leave four behind; one device may be open
            process.send_signal(signal.SIGINT)
            self.assertEqual(Outcome(process).result, self.CANCELLED)

    def test_a_transmitter_that_takes_no_report_is_given_a_second_at_each(self):
        trace = WORK / "trace-stuck.jsonl"
        trace.touch()
        with DeafUsbTransmitter():
            process, started = start("read", "--trace", trace), time.monotonic()
            self.addCleanup(process.kill)
            wait_for(lambda: '"write","ok":false' in trace.read_text())
            process.send_signal(signal.SIGINT)
            self.assertEqual(Outcome(process).result, self.CANCELLED)
            self.assertLess(time.monotonic() - started, 60)


def prepare(programs: pathlib.Path) -> None:
    for program in (CTL, SIMULATOR):
        shutil.copy(programs / program.name, program)
    write_programme(PROGRAMME, 40)
    WORK.chmod(0o755)


if __name__ == "__main__":
    prepare(pathlib.Path(sys.argv.pop(1)))
    unittest.main()
