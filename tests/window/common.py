"""What is the same for the windows of both systems."""

import contextlib
import os
import subprocess
import time


def eventually(condition, what, seconds=30):
    """What `condition` gives as soon as it is true."""
    end = time.monotonic() + seconds
    while True:
        with contextlib.suppress(RuntimeError):  # the program is busy, or what it showed is gone
            if result := condition():
                return result
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.01)


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
