"""The console program at a terminal: what it draws, and how it takes Ctrl-C and signals."""

import io
import json
import os
import re
import signal

import pexpect

from ventoctl import COMMAND, PLAIN_ENVIRONMENT, WAITING, ConsoleTest, programme

CTRL_C = "\x03"
PATIENCE = 120  # seconds; of a machine that does much else
ERASURE = re.compile("\r(?:\x1b\\[(\\d+)A)?\x1b\\[J")


class Terminal(ConsoleTest):
    def open(self, *arguments, columns=80):
        """Starts the program at a terminal of its own, its results in a file."""
        self.child = pexpect.spawn(
            "sh", ["-c", 'exec "$@" >results', "sh", *COMMAND, *arguments],
            cwd=self.folder, env=PLAIN_ENVIRONMENT, dimensions=(24, columns), encoding="utf-8",
            timeout=PATIENCE,
        )  # fmt: skip
        self.addCleanup(self.child.close, force=True)
        self.child.logfile_read, self.columns = io.StringIO(), columns

    def wait_for(self, wanted, key=""):
        """Waits until the program has drawn this, in one line or more, behind what was waited for before; presses `key`."""
        self.child.expect(re.escape(wanted).replace(r"\ ", r"\s+"))
        self.child.send(key)

    def finish(self, status):
        """The results, and all that was drawn: what each erasure took away, and what is left at the end. No line is
        wider than the terminal."""
        self.child.expect(pexpect.EOF)
        self.raw = self.child.logfile_read.getvalue()
        self.assertEqual(self.child.wait(), status, self.raw)
        drawn = re.sub("\x1b\\[\\d*m|\a", "", self.raw.replace("^C", ""))
        self.assertLessEqual(max(map(len, ERASURE.sub("\n", drawn).splitlines() or [""])), self.columns, drawn)
        return (self.folder / "results").read_text(), ERASURE.split(drawn)

    def endless_wait(self):
        return self.simulate(remote=None, reportMicroseconds=1000)

    def slow_programme(self, size=1000):
        path = self.file("VENTO-x.qlb", programme(size))
        return ["program", path, self.simulate(reportMicroseconds=1000, image="image.json"), "--language", "ita"]

    def test_caption_and_bar_are_drawn_in_place_within_the_width_and_gone_at_the_end(self):
        for columns in (80, 40, 12):
            with self.subTest(columns):
                self.open(*self.slow_programme(), columns=columns)
                out, (*drawn, left) = self.finish(0)
                self.assertEqual((out.splitlines()[0], left), ("Programmazione eseguita con successo", ""))
                for picture, climb in zip(drawn[::2], drawn[1::2]):
                    rows = picture.split("\r\n")
                    self.assertEqual(int(climb or 0), len(rows) - 1)
                    self.assertLess(max(map(len, rows)), columns)
                self.assertTrue("".join(drawn[0].split()).startswith(WAITING.replace(" ", "")), drawn[0])
                self.assertTrue(any(re.fullmatch("█+░+ +50 %", picture) for picture in drawn[::2]), drawn)

    def test_the_first_ctrl_c_cancels_the_wait(self):
        self.open("read", self.endless_wait(), "--json", "--language", "eng")
        self.wait_for("Ctrl-C", CTRL_C)
        out, (*_, left) = self.finish(13)
        self.assertEqual((json.loads(out)["result"], json.loads(out)["message"]), (13, "Programming canceled"))
        self.assertEqual(left, "ventoctl: Programming canceled\r\n          The operator cancelled.\r\n")

    def test_ctrl_c_cancels_nothing_but_a_wait_and_a_second_one_ends_at_once_with_the_image_kept(self):
        self.open(*self.slow_programme(4000))
        for shown in (" 5 %", " 15 %"):
            self.wait_for(shown, CTRL_C)
        self.assertEqual(self.finish(130)[0], "")
        self.assertEqual(self.raw.count("nulla da annullare"), 1)
        self.assertEqual(self.raw.count("Interrotto durante la programmazione"), 1)
        words = json.loads((self.folder / "image.json").read_text())["memory"]
        self.assertGreater(sum(map(len, words.values())), 1500)

    def test_ctrl_c_ends_a_series_in_a_wait_at_once_and_in_a_transfer_behind_the_remote(self):
        path, log = self.file("VENTO-x.qlb", programme(1000)), self.folder / "log.jsonl"
        for columns, shown, status, good in (
            (80, "Take the remote away", 0, 1), (40, " 15 %", 0, 1), (20, "Take the remote away", 0, 1), (20, " 15 %", 130, 0),
        ):  # fmt: skip
            log.unlink(missing_ok=True)
            simulate = self.simulate(reportMicroseconds=1000)
            self.open("program", path, simulate, "--series", "--log", str(log), "--language", "eng", columns=columns)
            self.wait_for(shown, CTRL_C)
            if status:
                self.wait_for(" 35 %", CTRL_C)
            out, _ = self.finish(status)
            self.assertEqual(out, f"Remote 1: good\nEnd of the series: {good} good, 0 bad\n" if good else "")
            self.assertEqual(self.raw.count("\a"), good)
            (line,) = map(json.loads, log.read_text().splitlines())
            self.assertEqual((line["status"], line["complete"]), (status, status == 0))
            cut_off = [column["outcome"]["reason"] == "cut off in its midst." for column in line["columns"]]
            self.assertEqual(sum(cut_off), int(status != 0))
            self.assertEqual("The series ends" in self.raw, shown == " 15 %")

    def test_the_time_of_a_wait_is_shown_as_it_passes(self):
        self.open("read", self.endless_wait(), "--language", "eng", columns=20)
        self.wait_for("0:00  Ctrl-C")
        self.wait_for("cancels")
        self.child.expect("0:0[1-9]")
        self.child.send(CTRL_C)
        self.finish(13)

    def test_signals_end_it_at_once_and_the_consumed_file_is_gone(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            path = self.file("VENTO-x.qlb", programme())
            self.open("program", path, "--consume", self.endless_wait())
            self.wait_for("Ctrl-C")
            self.child.kill(number)
            out, (*_, left) = self.finish(128 + number)
            self.assertEqual((out, left, os.path.exists(path)), ("", "", False))

    def test_the_codec_draws_a_bar_and_one_ctrl_c_ends_it_with_nothing_changed(self):
        source, dest = self.file("source", b"some bytes at the beginning"), self.file("dest", b"precious")
        os.truncate(source, 1 << 28)
        self.open("encode", "-f", source, dest)
        self.wait_for("12 %", CTRL_C)
        out, (*_, left) = self.finish(130)
        self.assertEqual((out, left, (self.folder / "dest").read_bytes()), ("", "", b"precious"))
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["dest", "results", "source"])

    def test_another_file_is_overwritten_if_the_operator_agrees(self):
        for columns, answer, status in ((20, "n\n", 73), (80, "\n", 73), (40, CTRL_C, 130), (20, "y\n", 0)):
            source, dest = self.file("source", b"abracadabra"), self.file("dest", b"precious")
            self.open("encode", source, dest, columns=columns)
            self.wait_for("exists. Overwrite it? [y/N] ", answer)
            self.finish(status)
            self.assertEqual((self.folder / "dest").read_bytes() == b"precious", status != 0)
