"""Drives vento.exe under Wine, by the window_driver beside it."""

import contextlib
import json
import os
import pathlib
import re
import struct
import subprocess
import tempfile

import common
from common import eventually

WM_CLOSE, WM_ENDSESSION, BM_CLICK, WM_SYSCOMMAND, WM_DROPFILES, WM_DPICHANGED = 0x10, 0x16, 0xF5, 0x112, 0x233, 0x2E0
CLASSES = {"list": "ListBox", "progress bar": "msctls_progress32"}
ACCESSIBLE_NAME, ACCESSIBLE_DESCRIPTION = "608d3df8-8128-4aa7-a428-f55e49267291", "4d48dfe4-bd3f-491f-a648-492d6f20c588"
SC_HOLD_CAPTION, SC_KEYMENU = 0xF012, 0xF100


def native(argument):
    return "Z:" + str(argument).replace("/", "\\") if isinstance(argument, pathlib.Path) else str(argument)


def start(*command, folder=None, out=subprocess.DEVNULL, log=subprocess.DEVNULL, **variables):
    # Never with a pipe, which Wine's helpers keep open.
    return subprocess.Popen(["wine", *map(native, command)], cwd=folder, stdin=subprocess.DEVNULL, stdout=out,
                            stderr=log, env=os.environ | {"LC_ALL": "C.UTF-8"} | variables)


@contextlib.contextmanager
def screen(size, scale):
    """Another screen for all that is started; what a window there is opened with."""
    values = [(r"Control Panel\Desktop", "LogPixels", "REG_DWORD", int(96 * scale)),
              (r"Software\Wine\Explorer\Desktops", "other", "REG_SZ", size), (r"Software\Wine\Explorer", "Desktop", "REG_SZ", "other")]
    for key, name, kind, value in values:
        start("reg", "add", "HKCU\\" + key, "/v", name, "/t", kind, "/d", value, "/f").wait(60)
    yield {}
    start("reg", "delete", r"HKCU\Control Panel\Desktop", "/v", "LogPixels", "/f").wait(60)
    start("reg", "add", "HKCU\\" + key, "/v", name, "/d", "Default", "/f").wait(60)


class Window(common.WindowOnScreen):
    SCALES = (1, 1.5, 2)

    def __init__(self, program, folder, *arguments, language="it", simulate="1", scale=1, traced=False):
        self.driver = pathlib.Path(program).with_name("window_driver.exe")
        region = {"it": "ITA", "en": "ENU"}[language]
        start("reg", "add", r"HKCU\Control Panel\International", "/v", "sLanguage", "/d", region, "/f").wait(60)
        if traced:
            calls = "user32.FlashWindowEx;user32.MessageBeep"
            start("reg", "add", r"HKCU\Software\Wine\Debug", "/v", "RelayInclude", "/d", calls, "/f").wait(60)
        # Wine, which does nothing with what screen readers and the taskbar are told, says so at least.
        self.log = tempfile.NamedTemporaryFile()
        self.process = start(program, *arguments, folder=folder, log=self.log, VENTO_SIMULATE=simulate,
                             WINEDEBUG="-all,fixme+oleacc" + ",fixme+explorerframe,+relay" * traced)
        eventually(self.windows, "the window")
        for each in (3, scale) if scale != 1 else ():  # as if it had come to two other screens
            self.drive("lend", self.form()["handle"], WM_DPICHANGED, 0x10001 * int(96 * each),
                       *struct.pack("<4i", 10, 10, 400, 400))

    def logged(self, pattern):
        return re.findall(pattern, pathlib.Path(self.log.name).read_text(errors="replace"))

    def received(self, message):
        """The windows of a traced one that have had the message."""
        return {str(int(handle, 16)) for handle in self.logged(rf"Call window proc \w+ \(hwnd=(\w+),msg={message},")}

    @contextlib.contextmanager
    def covered(self):
        """Behind another program."""
        other = start("notepad")
        eventually(lambda: not self.focused(), "the other program in front")
        yield
        other.kill()
        other.wait()

    def calls_for_attention(self):
        """Of a traced one. Wine has no taskbar: it only says that one was told of progress."""
        calls = (r"SetProgressState .* flags 2", "SetProgressValue", r"Call user32.MessageBeep\(00000040\)", "Call user32.Flash")
        return all(map(self.logged, calls))

    def told(self, what, controls):
        """What screen readers are told of these controls. Wine cuts off what is long."""
        pattern = rf'SetHwndPropStr \((\w+) \d+ 0 {{{what}}} L"(.*)"(?:\.\.\.)?\)'
        texts = {str(int(handle, 16)): text for handle, text in self.logged(pattern)}
        letter = re.compile(r"\\([0-9a-f]{4}|.)")

        def plain(escaped):
            code = escaped[1]
            return chr(int(code, 16)) if len(code) == 4 else {"n": "\n"}.get(code, code)
        return [letter.sub(plain, texts.get(each["handle"], "")) for each in controls]

    def names(self, role):
        return self.told(ACCESSIBLE_NAME, self.controls(CLASSES[role]))

    def descriptions(self, role):
        return self.told(ACCESSIBLE_DESCRIPTION, self.controls(CLASSES[role]))

    def description(self, caption):
        return self.told(ACCESSIBLE_DESCRIPTION, [self.buttons()[caption]])[0]

    def ask_for_contrast(self):
        self.drive("contrast", self.form()["handle"])

    @contextlib.contextmanager
    def spoken(self):
        """What a screen reader speaks of its own accord, as a function that gives all of it so far."""
        with tempfile.NamedTemporaryFile() as out:
            listener = start(self.driver, "listen", out=out)

            def so_far():
                return [json.loads(each) for each in pathlib.Path(out.name).read_text().splitlines()]
            eventually(so_far, "that it listens")
            yield so_far
            listener.kill()
            listener.wait()

    def drive(self, *command):
        def run():
            with tempfile.TemporaryFile() as out:
                status = start(self.driver, *command, out=out).wait(60)
                out.seek(0)
                return status == 0 and [out.read().decode()]
        return eventually(run, command)[0]

    def windows(self, kind="", asked=""):
        state = json.loads(self.drive(asked).replace("&", ""))  # which marks the letters of buttons
        return [each for each in state if kind in each["class"]]

    def controls(self, kind, window="", asked=""):
        return [each for top in self.windows(window, asked) for each in top["controls"] if each["class"] == kind]

    def held(self, kind, what="holds", window=""):
        return [each[what] for each in self.controls(kind, window, kind) if each["visible"]]

    def form(self):
        return self.windows("FormWeb")[0]

    def frame(self):
        return list(map(self.form().get, ("text", "place", "area")))

    def places(self):
        # The status line has no name of its own.
        return {each["text"] or "Status": each["place"] for each in self.form()["controls"]}

    def buttons(self):
        return {each["text"]: each for each in self.controls("Button") if each["visible"]}

    def enabled(self, caption):
        return self.buttons()[caption]["enabled"]

    def post(self, control, message, first=0, second=0):
        self.drive("post", control["handle"], message, first, second)

    def press(self, caption):
        self.post(eventually(lambda: self.buttons().get(caption), f"the button {caption}"), BM_CLICK)

    def status(self):
        return self.held("Edit", window="FormWeb")[0].replace("\r", "")

    def items(self):
        return self.held("ListBox")

    def bar(self):
        return next(iter(self.held("msctls_progress32")), None)

    def corner(self):
        return self.form()["corner"]

    def focused(self):
        return [each for each in self.form()["controls"] if each["focused"]]

    def focus(self):
        return "".join(each["text"] for each in self.focused())

    def enter_loop(self, command):
        """Has the system run a loop of its own in place of the program's: for the title bar, or for a menu."""
        self.post(self.form(), WM_SYSCOMMAND, command)
        eventually(self.in_loop, "the system's loop")

    def in_loop(self):
        return self.form()["held"]

    def drop(self, path):
        record = struct.pack("<5I", 20, 0, 0, 0, 1) + native(path).encode("utf-16-le") + bytes(4)
        self.drive("lend", self.form()["handle"], WM_DROPFILES, 0, *record)

    def close(self):
        self.post(self.form(), WM_CLOSE)

    def end_session(self):
        self.post(self.form(), WM_ENDSESSION, 1)

    def shows_a_dialog(self):
        return bool(self.windows("#32770"))

    def box(self):
        eventually(lambda: "OK" in self.buttons(), "the box")
        return [each["text"] for each in self.controls("Static", "#32770")]

    def dialog(self):
        field, = eventually(lambda: self.held("Edit", window="#32770"), "the file dialog")
        return self.windows("#32770")[0]["text"], field

    def fill(self, path=None):
        if path:
            self.drive("write", self.held("Edit", "handle", "#32770")[0], path)
        self.press("Open" if path else "Cancel")
        eventually(lambda: not self.held("Edit", window="#32770"), "the end of the dialog")
