#!/usr/bin/env python3
"""ventoctl against HID devices of the kernel; inside the virtual machine, as root.

ventoctl_test.py BIN: BIN is the folder of the programs.
"""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from kernel_devices import BentTransmitter, Simulator, good_reply, hidraw_nodes, is_poll, wait_for

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


def start(*arguments, user: int = 0) -> subprocess.Popen:
    return subprocess.Popen(
        [CTL, *map(str, arguments), "--json", "--quiet", "--language", "eng"],
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, user=user, group=user, extra_groups=[],
    )


class Outcome:
    def __init__(self, process: subprocess.Popen):
        started = time.monotonic()
        stdout, self.stderr = process.communicate(timeout=60)
        self.seconds = time.monotonic() - started
        self.status = process.returncode
        self.json = json.loads(stdout)

    @property
    def result(self):
        return self.json["result"]


def run(*arguments, user: int = 0) -> Outcome:
    return Outcome(start(*arguments, user=user))


def traced(*arguments) -> tuple[dict, list[dict]]:
    with tempfile.NamedTemporaryFile() as trace:
        outcome = run(*arguments, "--trace", trace.name)
        lines = [json.loads(line) for line in trace]
    return {key: value for key, value in outcome.json.items() if key != "seconds"}, lines


class Programming(unittest.TestCase):
    def test_either_kind_behind_foreign_devices_keeps_what_it_is_given(self):
        for kind in (FIRST_KIND, SECOND_KIND):
            image = WORK / f"image-{kind['vendorId']}.json"
            scenario = {"interfaces": [KEYBOARD, KEYBOARD, kind], "image": str(image), **QUICK}
            with self.subTest(kind=kind):
                with Simulator(SIMULATOR, scenario):
                    self.assertEqual(run("program", PROGRAMME).result, 0)
                    access = [each["access"] for each in run("devices").json["interfaces"]]
                    self.assertEqual(access, ["unknown", "unknown", "ok"])
                self.assertEqual(json.loads(image.read_text())["free"], 0)
                with Simulator(SIMULATOR, scenario):
                    self.assertIn("PROVA 2B", run("read").json["message"])

    def test_the_reports_are_those_of_the_simulation_in_the_process(self):
        scenario = {
            "interfaces": [KEYBOARD, SECOND_KIND],
            "remote": {"version": 197, "sections": [300, 60000, 4000], "arrivesAtPoll": 3},
            "faults": [
                {"cycle": 8, "kind": "flip", "byte": 1, "mask": 4},
                {"cycle": 11, "through": 12, "kind": "status", "value": 7},
                {"cycle": 14, "kind": "reply", "bytes": [0, 165]},
            ],
            **QUICK,
        }
        file = WORK / "scenario.json"
        file.write_text(json.dumps(scenario))
        for command in (["program", PROGRAMME], ["read"]):
            with self.subTest(command=command[0]), Simulator(SIMULATOR, scenario):
                real, link = traced(*command)
                self.assertEqual((real, link), traced(*command, f"--simulate={file}"))
                self.assertEqual(real["result"], 0)


class Access(unittest.TestCase):
    def test_a_transmitter_that_may_not_be_opened_is_not_called_absent(self):
        with Simulator(SIMULATOR, {"interfaces": [KEYBOARD, FIRST_KIND]}):
            devices = run("devices", user=NOBODY).json["interfaces"]
            self.assertEqual(devices[1]["access"], "forbidden")
            self.assertFalse(any(each["taken"] for each in devices))
            forbidden = run("read", user=NOBODY)
        absent = run("read", user=NOBODY)
        self.assertEqual((forbidden.status, absent.status), (2, 2))
        self.assertEqual(forbidden.json["messageBox"], absent.json["messageBox"])
        self.assertIn("60-vento.rules", forbidden.stderr)
        self.assertNotIn("60-vento.rules", absent.stderr)

    def test_the_simulator_says_what_it_lacks(self):
        def complaint(*arguments, **options):
            done = subprocess.run([SIMULATOR, *arguments], capture_output=True, text=True, **options)
            return done.returncode, done.stderr

        refused = WORK / "refused.json"
        refused.write_text('{"faults": [{"cycle": 1, "kind": "refused"}]}')
        self.assertEqual(complaint(user=NOBODY)[0], 77)
        self.assertIn("sudo", complaint(user=NOBODY)[1])
        status, text = complaint(refused)
        self.assertEqual(status, 65)
        self.assertIn("refused", text)


class UdevRule(unittest.TestCase):
    SEAT, OTHER = 1000, 1001

    @classmethod
    def setUpClass(cls):
        seats = pathlib.Path("/run/systemd/seats")
        seats.mkdir(parents=True)
        (seats / "seat0").write_text(f"IS_SEAT0=1\nACTIVE=1\nACTIVE_UID={cls.SEAT}\nSESSIONS=1\nUIDS={cls.SEAT}\n")
        shutil.copy(RULES, "/etc/udev/rules.d/")
        cls.daemon = subprocess.Popen(["/lib/systemd/systemd-udevd"], stderr=subprocess.DEVNULL)
        ping = ["udevadm", "control", "--ping"]
        wait_for(lambda: subprocess.run(ping, stderr=subprocess.DEVNULL).returncode == 0)

    @classmethod
    def tearDownClass(cls):
        cls.daemon.terminate()
        cls.daemon.wait()

    def test_the_user_at_the_seat_and_nobody_else_gets_the_transmitter(self):
        for kind in (FIRST_KIND, SECOND_KIND):
            with self.subTest(kind=kind), Simulator(SIMULATOR, {"interfaces": [KEYBOARD, kind], **QUICK}):
                keyboard, transmitter = hidraw_nodes()
                subprocess.run(["udevadm", "settle"], check=True)
                wait_for(lambda: "uaccess" in properties(transmitter).get("TAGS", ""))
                self.assertNotIn("uaccess", properties(keyboard).get("TAGS", ""))
                wait_for(lambda: os.stat(transmitter).st_mode & 0o060)  # the mask of an access list
                self.assertEqual(os.stat(transmitter).st_mode & 0o007, 0)
                self.assertEqual(os.stat(keyboard).st_mode & 0o077, 0)
                self.assertEqual(run("program", PROGRAMME, user=self.SEAT).result, 0)
                self.assertEqual(run("devices", user=self.OTHER).json["interfaces"][1]["access"], "forbidden")

    def test_the_file_is_in_order(self):
        if "verify" not in subprocess.run(["udevadm", "--help"], capture_output=True, text=True).stdout:
            self.skipTest("this udevadm cannot verify")
        subprocess.run(["udevadm", "verify", RULES], check=True)


def properties(node: str) -> dict[str, str]:
    lines = subprocess.run(["udevadm", "info", "--query=property", node], capture_output=True, text=True).stdout
    return dict(line.split("=", 1) for line in lines.splitlines())


class Unplugging(unittest.TestCase):
    """The kernel tells nobody in advance that a device goes, so several ends are right."""

    STATUSES = {0, 2, 3, 5, 6, 9, 10, 11, 12, 18, 19, 21}

    def test_at_any_point_it_fails_cleanly_and_the_next_run_succeeds(self):
        for cycle in (1, 3, 8, 20):
            for when in ("open", "write", "read"):
                fault = {"cycle": cycle, "kind": "unplugged", "when": when, "forMilliseconds": 200}
                scenario = {"interfaces": [KEYBOARD, FIRST_KIND], "faults": [fault], **QUICK}
                with self.subTest(cycle=cycle, when=when), Simulator(SIMULATOR, scenario) as simulator:
                    outcome = run("program", PROGRAMME)
                    self.assertIn(outcome.status, self.STATUSES)
                    self.assertFalse(outcome.json["progressBar"]["visible"])
                    self.assertLess(outcome.seconds, 30)
                    simulator.wait_for_line("/dev/hidraw", times=3)
                    self.assertIn(f"unplugged at open {cycle}", simulator.lines)
                    self.assertEqual(run("program", PROGRAMME).result, 0)

    def test_for_good_it_is_not_found_any_more(self):
        fault = {"cycle": 20, "kind": "unplugged", "when": "read"}
        with Simulator(SIMULATOR, {"interfaces": [FIRST_KIND], "faults": [fault], **QUICK}):
            self.assertNotEqual(run("program", PROGRAMME).result, 0)
            self.assertEqual(run("devices").json["interfaces"], [])
            self.assertEqual(run("program", PROGRAMME).status, 2)


class Misbehaviour(unittest.TestCase):
    VERSION_UNREAD, CANCELLED, FLAGS_UNREAD = 12, 13, 21

    def test_a_transmitter_that_never_answers_is_waited_for_until_the_operator_cancels(self):
        def open_files():
            return len(os.listdir(f"/proc/{process.pid}/fd"))

        with BentTransmitter(lambda frame: []):
            process = start("read")
            time.sleep(1.5)
            before = {open_files() for _ in range(20)}
            time.sleep(1.5)
            self.assertLessEqual(open_files(), max(before))
            process.send_signal(signal.SIGINT)
            outcome = Outcome(process)
        self.assertEqual(outcome.result, self.CANCELLED)
        self.assertLess(outcome.seconds, 30)

    def test_replies_that_are_not_whole_reports_fail_the_step(self):
        bent = {
            "short": lambda report: [report[:63]],
            "long": lambda report: [report + b"\0"],
            "none": lambda report: [],
            "an unasked one before": lambda report: [b"\xaa" * 64, report],
        }
        for name, bend in bent.items():

            def reply(frame, bend=bend):
                good = good_reply(frame)
                return good if is_poll(frame) else [bad for report in good for bad in bend(report)]

            with self.subTest(name), BentTransmitter(reply):
                outcome = run("read")
                self.assertEqual(outcome.result, self.VERSION_UNREAD)
                self.assertLess(outcome.seconds, 30)

    def test_reports_too_many_do_no_more_harm_than_a_failed_step(self):
        """A report that comes late meets the next open, and nothing in it tells that it is not the reply."""
        bent = {
            "forty of each": (lambda frame: 40 * good_reply(frame), None),
            "one when it is closed": (good_reply, lambda device: device.send(b"\xaa" * 64)),
        }
        for name, (reply, on_close) in bent.items():
            with self.subTest(name), BentTransmitter(reply, on_close):
                process = start("read")
                time.sleep(2)
                process.send_signal(signal.SIGINT)
                self.assertIn(Outcome(process).result, {0, self.FLAGS_UNREAD, self.VERSION_UNREAD, self.CANCELLED})
        with BentTransmitter(good_reply):
            self.assertEqual(run("read").result, 0)


def prepare(programs: pathlib.Path) -> None:
    for program in (CTL, SIMULATOR):
        shutil.copy(programs / program.name, program)
    lines = []
    for column in (1, 2, 3):
        for version in "AB":
            codes = [ord(letter) + 128 for letter in f"PROVA {column}{version}"] + list(range(40))
            lines.append(f"{column};Prova {column};{','.join(map(str, codes))};x;y\n")
    PROGRAMME.write_text("".join(lines))
    WORK.chmod(0o755)


if __name__ == "__main__":
    prepare(pathlib.Path(sys.argv.pop(1)))
    unittest.main()
