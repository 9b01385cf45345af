"""The console program at a terminal: what it draws, and how it takes Ctrl-C and signals."""

import codecs
import fcntl
import json
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

from ventoctl import COMMAND, PLAIN_ENVIRONMENT, ConsoleTest, programme

WAITING = "Posizionare il telecomando di fronte al trasmettitore entro 1 minuto. Sincronizzazione in corso"
CTRL_C = b"\x03"


class Screen:
    """What a terminal shows after the control sequences that the program uses; any other is refused."""

    def __init__(self, columns):
        self.columns, self.rows, self.row, self.column = columns, [""], 0, 0

    def feed(self, text):
        for sequence, character in re.findall(r"\x1b\[(\d*[A-Za-z])|([^\x1b])", text):
            if sequence == "J":
                del self.rows[self.row + 1 :]
                self.rows[self.row] = self.rows[self.row][: self.column]
            elif sequence.endswith("A"):
                self.row -= int(sequence[:-1])
            elif character == "\r":
                self.column = 0
            elif character == "\n":
                self.row, self.rows = self.row + 1, self.rows + [""] * (self.row + 2 - len(self.rows))
            elif character:
                self.put(character)
            elif not sequence.endswith("m"):
                raise ValueError(sequence)

    def put(self, character):
        if self.column == self.columns:
            self.feed("\r\n")
        line = self.rows[self.row].ljust(self.column)
        self.rows[self.row] = line[: self.column] + character + line[self.column + 1 :]
        self.column += 1

    def text(self):
        return "\n".join(row.rstrip() for row in self.rows).rstrip()


class Terminal(ConsoleTest):
    def open(self, *arguments, columns=80, **environment):
        """Starts the program at a terminal of its own, its results on a pipe."""
        self.master, slave = pty.openpty()
        self.addCleanup(os.close, self.master)
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        self.process = subprocess.Popen(
            [*COMMAND, *arguments], env=PLAIN_ENVIRONMENT | environment, start_new_session=True,
            stdin=slave, stdout=subprocess.PIPE, stderr=slave,
            preexec_fn=lambda: fcntl.ioctl(slave, termios.TIOCSCTTY, 0),
        )  # fmt: skip
        os.close(slave)
        self.addCleanup(self.process.stdout.close)
        self.addCleanup(self.process.kill)
        self.screen, self.raw, self.pending = Screen(columns), "", ""
        self.decoder = codecs.getincrementaldecoder("utf-8")()

    def read(self):
        """Takes in what there is; False at the end of the program."""
        if not select.select([self.master], [], [], 30)[0]:
            self.fail("nothing is drawn any more\n" + self.screen.text())
        try:
            self.pending += self.decoder.decode(os.read(self.master, 65536))
        except OSError:  # Linux says so when the other side is closed
            return False
        return True

    def show(self, size):
        shown, self.pending = self.pending[:size], self.pending[size:]
        self.raw += shown
        self.screen.feed(shown)

    def wait_for(self, wanted, key=b""):
        """Shows what the program draws up to `wanted` and no further, however far the program is; presses `key`."""
        while wanted not in self.pending:
            self.assertTrue(self.read(), f"{wanted} was never drawn\n{self.raw}{self.pending}")
        self.show(self.pending.index(wanted) + len(wanted))
        os.write(self.master, key)

    def finish(self, status):
        while self.read():
            pass
        self.show(len(self.pending))
        out = self.process.stdout.read().decode()
        self.assertEqual(self.process.wait(), status, self.raw)
        return out

    def endless_wait(self):
        return self.simulate(remote=None, reportMicroseconds=1000)

    def slow_programme(self, size=1000):
        path = self.file("VENTO-x.qlb", programme(size))
        return ["program", path, self.simulate(reportMicroseconds=1000, image="image.json"), "--language", "ita"]

    def test_caption_and_bar_are_drawn_in_place_within_the_width_and_gone_at_the_end(self):
        for columns in (80, 40, 12):
            with self.subTest(columns):
                self.open(*self.slow_programme(), columns=columns)
                self.wait_for("Ctrl-C")
                shown = "".join(self.screen.text().split())
                self.assertTrue(shown.startswith(WAITING.replace(" ", "")), shown)
                self.wait_for(" 50 %")
                self.assertRegex(self.screen.text(), "^█+░+ +[0-9]+ %$")
                self.assertLess(len(self.screen.text()), columns)
                self.assertEqual(self.finish(0), "Programmazione eseguita con successo\n")
                self.assertEqual(self.screen.text(), "")

    def test_colour_only_where_it_is_wanted_and_nothing_moves_on_a_dumb_terminal(self):
        for environment, coloured, moves in (
            ({}, True, True),
            ({"NO_COLOR": "1"}, False, True),
            ({"TERM": "dumb"}, False, False),
        ):
            self.open(*self.slow_programme(), **environment)
            self.finish(0)
            self.assertEqual(("\x1b[32m" in self.raw, "\x1b[J" in self.raw), (coloured, moves))
        self.assertEqual(self.raw, WAITING + "\r\n")
        self.open(*self.slow_programme(), "--quiet")
        self.finish(0)
        self.assertEqual(self.raw, "")

    def test_the_first_ctrl_c_cancels_the_wait(self):
        self.open("read", self.endless_wait(), "--json", "--language", "eng")
        self.wait_for("Ctrl-C", CTRL_C)
        answer = json.loads(self.finish(13))
        self.assertEqual((answer["result"], answer["message"]), (13, "Programming canceled"))
        shown = self.screen.text().replace("^C", "")
        self.assertEqual(shown, "ventoctl: Programming canceled\n          The operator cancelled.")

    def test_ctrl_c_cancels_nothing_but_a_wait_and_a_second_one_ends_at_once_with_the_image_kept(self):
        self.open(*self.slow_programme(4000))
        self.wait_for(" 5 %", CTRL_C)
        self.wait_for("nulla da annullare")
        self.wait_for(" 15 %", CTRL_C)
        self.assertEqual(self.finish(130), "")
        self.assertEqual(self.raw.count("nulla da annullare"), 1)
        words = json.loads((self.folder / "image.json").read_text())["memory"]
        self.assertGreater(sum(map(len, words.values())), 1500)

    def test_signals_end_it_at_once_and_the_consumed_file_is_gone(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            path = self.file("VENTO-x.qlb", programme())
            self.open("program", path, "--consume", self.endless_wait())
            self.wait_for("Ctrl-C")
            self.process.send_signal(number)
            self.assertEqual(self.finish(128 + number), "")
            self.assertFalse(os.path.exists(path))
            self.assertEqual(self.screen.text(), "")

    def test_an_ignored_interrupt_stays_ignored(self):
        command = ["sh", "-c", 'trap "" INT HUP; exec "$@"', "sh", *COMMAND, *self.slow_programme(), "--quiet"]
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
        for number in (signal.SIGINT, signal.SIGHUP) * 2:
            time.sleep(0.1)
            process.send_signal(number)
        self.assertEqual(process.wait(), 0)

    def test_the_codec_draws_a_bar_and_one_ctrl_c_ends_it_with_nothing_changed(self):
        source, dest = self.file("source", b"some bytes at the beginning"), self.file("dest", b"precious")
        os.truncate(source, 1 << 28)
        self.open("encode", source, dest)
        self.wait_for("12 %", CTRL_C)
        self.assertEqual(self.finish(130), "")
        self.assertEqual(self.screen.text().replace("^C", ""), "")
        self.assertEqual((self.folder / "dest").read_bytes(), b"precious")
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["dest", "source"])


if __name__ == "__main__":
    unittest.main()
