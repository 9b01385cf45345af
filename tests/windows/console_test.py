#!/usr/bin/env python3
"""console_test.py VENTOCTL.exe PROGRAMME: the program on a Windows console, which under Wine is the terminal: whole
characters, and what Ctrl-C does there."""

import json
import pathlib
import shlex
import sys
import tempfile
import unittest

import pexpect

ENVIRONMENT = pathlib.Path(__file__).resolve().parent.parent / "wine/environment.sh"
CTRL_C = "\x03"


class Console(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def run_program(self, *arguments, scenario, keys):
        """The exit status of a run and all that it draws. At each of `keys` it has drawn the text and gets the key."""
        (self.folder / "scenario.json").write_text(json.dumps({"reportMicroseconds": 2000, **scenario}))
        start = 'source "$0"; make_prefix; keep_server; exec wine "$@"'
        options = ["--language=ita", f"--simulate=Z:{self.folder}/scenario.json"]
        command = shlex.join(["bash", "-c", start, str(ENVIRONMENT), PROGRAM, *arguments, *options])
        # A terminal within one: the inner one is also held by Wine's helpers, which stay for a minute.
        child = pexpect.spawn("script", ["-qec", command, "/dev/null"], encoding="utf-8", timeout=120)
        self.addCleanup(child.close, force=True)
        drawn = ""
        for shown, key in (*keys, (pexpect.EOF, "")):
            child.expect(shown)
            drawn += child.before
            child.send(key)
        self.assertNotIn("\N{REPLACEMENT CHARACTER}", drawn)
        return child.wait(), drawn

    def test_a_bar_is_drawn_in_whole_characters(self):
        status, drawn = self.run_program("program", PROGRAMME, scenario={}, keys=[])
        self.assertEqual(status, 0, drawn)
        self.assertRegex(drawn, "█░.*%")
        self.assertIn("Programmazione eseguita con successo", drawn)

    def test_ctrl_c_cancels_a_wait_and_the_second_one_ends_a_transfer_with_the_image_kept(self):
        # Under Wine the key is a signal to a process of this system, too, which has been seen to take that for the end.
        _, drawn = self.run_program("read", scenario={"remote": None}, keys=[("Ctrl-C", CTRL_C)])
        self.assertIn("Programmazione annullata", drawn)
        image = self.folder / "image.json"
        slow = {"image": f"Z:{image}", "reportMicroseconds": 10000}
        keys = [("█", CTRL_C), ("nulla da annullare", CTRL_C)]
        status, drawn = self.run_program("program", PROGRAMME, scenario=slow, keys=keys)
        self.assertEqual(status, 130, drawn)
        self.assertIn("Interrotto durante la programmazione", drawn)
        self.assertIn("256", json.loads(image.read_text())["memory"])


if __name__ == "__main__":
    PROGRAM, PROGRAMME = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
