"""What is the same for all windows."""

import contextlib
import functools
import json
import os
import pathlib
import subprocess
import tempfile
import time
import unittest

with contextlib.suppress(ImportError):  # the page's window needs none of it
    from Xlib import X, XK, display
    from Xlib.ext import xtest

LABELS = [["Città 100"], ["Un ricevitore dal nome davvero troppo lungo per il suo riquadro"], ["Gamma 300"]]

PATIENCE = float(os.environ.get("VENTO_PATIENCE", 1))  # how much slower than usual a machine may be


def eventually(condition, what, seconds=30):
    """What `condition` gives as soon as it is true."""
    end = time.monotonic() + seconds * PATIENCE
    while True:
        with contextlib.suppress(RuntimeError):  # the program is busy, or what it showed is gone
            if result := condition():
                return result
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.01 * PATIENCE)


class Window:
    """The program that runs as `process`. Controls go by their captions, keys by their names in X11."""

    def await_status(self, text, seconds=30):
        eventually(lambda: text in self.status(), f"the status {text}", seconds)

    def answer(self):
        self.press("OK")
        eventually(lambda: not self.shows_a_dialog(), "the end of the box")

    def picture(self, name):
        """Takes one of whatever is on the screen where the form is, if there is a folder for it."""
        if folder := os.environ.get("VENTO_PICTURES"):
            time.sleep(0.1)  # for what has just changed to be painted
            _, (left, top, right, bottom), _ = self.frame()
            subprocess.run(["import", "-window", "root", "-crop", f"{right - left}x{bottom - top}+{left}+{top}",
                            "+repage", "-strip", f"{folder}/{name}.png"], check=True)

    def ends(self, seconds=10):
        """The exit status, for which the program has little time."""
        return self.process.wait(timeout=seconds)

    def keeps(self, file):
        """Whether the file is still there after the end."""
        return file.exists()

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        """Leaves nothing of the program, and ends it well unless somebody has looked at its end already."""
        try:
            if self.process.returncode is None:
                self.close()
                assert self.ends() == 0, "an exit status other than 0"
        finally:
            self.process.kill()
            self.process.wait()


class WindowOnScreen(Window):
    """One on a screen of X11, whose real mouse and keyboard it is used with. `corner` gives the place of its form there."""

    screen = None  # another one than the tests' own

    @functools.cached_property
    def display(self):
        return display.Display(self.screen)

    def __exit__(self, *failure):
        super().__exit__(*failure)
        self.display.close()

    def root(self):
        return self.display.screen().root

    def colour(self, x, y):
        """Red, green and blue of a pixel of the form."""
        left, top = self.corner()
        blue, green, red, *_ = self.root().get_image(left + x, top + y, 1, 1, X.ZPixmap, 0xFFFFFFFF).data
        return red, green, blue

    def drag_mouse(self, *places):
        """With its button held down, from one place of the form to another."""
        left, top = self.corner()
        for (x, y), kind in zip(places, (X.ButtonPress, X.ButtonRelease)):
            xtest.fake_input(self.display, X.MotionNotify, x=left + x, y=top + y)
            xtest.fake_input(self.display, kind, 1)
            self.display.sync()

    def key(self, chord):
        codes = [self.display.keysym_to_keycode(XK.string_to_keysym(key)) for key in chord.split("+")]
        for kind, each in ((X.KeyPress, codes), (X.KeyRelease, reversed(codes))):
            for code in each:
                xtest.fake_input(self.display, kind, code)
        self.display.sync()

    def copied(self):
        """What is in the clipboard."""
        atom = self.display.intern_atom
        window = self.root().create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        window.convert_selection(atom("CLIPBOARD"), atom("UTF8_STRING"), atom("VENTO"), X.CurrentTime)
        eventually(lambda: self.display.pending_events() and self.display.next_event().type == X.SelectionNotify, "the text")
        text = window.get_full_property(atom("VENTO"), X.AnyPropertyType)
        return text and text.value.decode().replace("\r", "")


class Case(unittest.TestCase):
    """A case with a folder of its own, in which the program runs."""

    window = program = None

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="prova è ")))

    def programme(self, name="VENTO-prova.qlb", labels=LABELS, length=400):
        """A programme file with three lists of so many bytes that read back as PROVA-01, PROVA-02, PROVA-03."""
        lines = []
        for column, [label] in enumerate(labels, 1):
            codes = [ord(each) + 128 for each in f"PROVA-0{column}"] + [column] * (length - 8)
            lines += [f"{column};{label};{','.join(map(str, codes))};x;y\n"] * 2
        (self.folder / name).write_text("".join(lines), encoding="windows-1252")
        return self.folder / name

    def scenario(self, **keys):
        (self.folder / "scenario.json").write_text(json.dumps(keys))
        return "scenario.json"

    def open(self, *arguments, **options):
        return self.enterContext(self.window(self.program, self.folder, *arguments, **options))

    def open_slowly(self, microseconds=5000, options={}, **keys):
        """With a programme loaded whose transfer takes some six seconds."""
        self.file = self.programme(length=2000)
        return self.open(self.file, simulate=self.scenario(reportMicroseconds=microseconds, **keys), **options)

    def close(self, window, file=None):
        window.close()
        self.assert_ends(window, file)

    def assert_ends(self, window, file=None, status=0):
        self.assertEqual(window.ends(), status)
        self.assertFalse(file and window.keeps(file))
