"""Drives the window from outside: a screen and a session bus of its own, the accessibility tree to look and to
press, X11 for what only a keyboard, a mouse or a window manager can do."""

import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

SKIPPED = 77


def skip(reason):
    """Leaves with what CTest takes for a skipped test, or with a failure where nothing may be skipped."""
    print("skipped:", reason)
    sys.exit(1 if os.environ.get("VENTO_SKIP_NOTHING") else SKIPPED)


try:
    import gi

    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi
    from Xlib import X, XK, display
    from Xlib.ext import xtest
    from Xlib.protocol import event
except (ImportError, ValueError) as missing:
    skip(f"{missing}")


def inside_a_desktop():
    """Runs this script again on a screen and a session bus of its own; comes back on the inside."""
    if "VENTO_TEST_DESKTOP" in os.environ:
        return
    for tool in ("Xvfb", "dbus-run-session"):
        if not shutil.which(tool):
            skip(f"no {tool}")
    with tempfile.TemporaryDirectory() as runtime:
        shown, out = os.pipe()
        screen = subprocess.Popen(
            ["Xvfb", "-displayfd", str(out), "-screen", "0", "1600x1200x24", "-dpi", "96", "-nolisten", "tcp"],
            pass_fds=[out], stderr=subprocess.DEVNULL)
        os.close(out)
        number = os.read(shown, 16).decode().strip()
        variables = {"VENTO_TEST_DESKTOP": "1", "DISPLAY": f":{number}", "XDG_RUNTIME_DIR": runtime,
                     "HOME": runtime, "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "NO_AT_BRIDGE": "0"}
        removed = ("WAYLAND_DISPLAY", "LC_ALL", "LC_MESSAGES", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR")
        inside = {name: value for name, value in os.environ.items() if name not in removed} | variables
        try:
            status = subprocess.run(["dbus-run-session", "--", sys.executable, *sys.argv], env=inside).returncode
        finally:
            screen.terminate()
            screen.wait()
    sys.exit(status)


def eventually(condition, what, seconds=30):
    """What `condition` gives as soon as it is true."""
    end = time.monotonic() + seconds
    while True:
        with contextlib.suppress(gi.repository.GLib.Error):  # the program is busy, or what it showed is gone
            if result := condition():
                return result
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.01)


def children(node):
    return filter(None, map(node.get_child_at_index, range(node.get_child_count())))


class Window:
    """A running `vento`, and the folder that it runs in."""

    def __init__(self, program, folder, *arguments, language="it_IT.UTF-8", simulate="1", scale=1):
        self.folder = pathlib.Path(folder)
        variables = {"LANG": language, "VENTO_SIMULATE": simulate, "QT_SCALE_FACTOR": str(scale)}
        self.process = subprocess.Popen([program, *map(str, arguments)], cwd=folder, env=os.environ | variables,
                                        stderr=subprocess.DEVNULL)
        self.display = display.Display()
        nodes = eventually(self.tree, "the window in the accessibility tree")
        self.known = {(node.get_role_name(), node.get_name()): node for node in nodes}
        self.label, self.gauge = (next((node for node in nodes if node.get_role_name() == role), None)
                                  for role in ("label", "progress bar"))

    def close(self):
        """Leaves nothing of the program, if it has not ended by itself."""
        self.process.kill()
        self.process.wait()
        self.display.close()

    # The accessibility tree.

    def tree(self):
        desktop = Atspi.get_desktop(0)
        desktop.set_cache_mask(Atspi.Cache.NONE)
        for application in children(desktop):
            if application.get_process_id() == self.process.pid:
                application.set_cache_mask(Atspi.Cache.NONE)
                return list(self.below(application))
        return []

    def below(self, node):
        for child in children(node):
            yield child
            yield from self.below(child)

    def all(self, role, name=None):
        """What is on the screen of that role and name, looked for again where something goes meanwhile."""
        while True:
            with contextlib.suppress(gi.repository.GLib.Error):
                return [node for node in self.tree() if node.get_role_name() == role
                        and name in (None, node.get_name()) and self.shows(node)]

    def one(self, role, name=None):
        """The control of that role and name, once it is on the screen. A running operation lets the program
        answer only now and then, so a control that is known already is not looked for again."""
        def look():
            found = self.known.get((role, name))
            return [found] if found and self.shows(found) else self.all(role, name)
        return eventually(look, f"a {role} {name}")[0]

    def shows(self, node, state=Atspi.StateType.SHOWING):
        return node.get_state_set().contains(state)

    def press(self, name):
        Atspi.Action.do_action(self.one("push button", name), 0)

    def enabled(self, name):
        return self.shows(self.one("push button", name), Atspi.StateType.ENABLED)

    def status(self):
        return self.label.get_name()

    def await_status(self, text, seconds=30):
        eventually(lambda: text in self.status(), f"the status {text}", seconds)

    def items(self):
        return [[child.get_name() for child in self.below(box)] for box in self.all("list")]

    def bar(self):
        """The value of the bar and the largest it can have; nothing while it is hidden."""
        if not self.shows(self.gauge):
            return None
        return Atspi.Value.get_current_value(self.gauge), Atspi.Value.get_maximum_value(self.gauge)

    # What X11 alone can do.

    def windows(self):
        root = self.display.screen().root
        pid = self.display.intern_atom("_NET_WM_PID")
        with_pid = ((w, w.get_full_property(pid, X.AnyPropertyType)) for w in root.query_tree().children)
        return [w for w, value in with_pid if value and value.value[0] == self.process.pid
                and w.get_attributes().map_state == X.IsViewable]

    def type(self, *keys, window=-1):
        """Presses keys by their names, as in "Alt_L+c", in the topmost window of the program."""
        self.windows()[window].set_input_focus(X.RevertToParent, X.CurrentTime)
        self.display.sync()
        time.sleep(0.05)
        for chord in keys:
            codes = [self.display.keysym_to_keycode(XK.string_to_keysym(key)) for key in chord.split("+")]
            for kind, each in ((X.KeyPress, codes), (X.KeyRelease, reversed(codes))):
                for code in each:
                    xtest.fake_input(self.display, kind, code)
            self.display.sync()

    def _tell(self, window, kind, data):
        message = event.ClientMessage(window=window, client_type=self.display.intern_atom(kind), data=(32, data))
        window.send_event(message)
        self.display.flush()

    def close_by_title_bar(self):
        self._tell(self.windows()[0], "WM_PROTOCOLS", [self.display.intern_atom("WM_DELETE_WINDOW"), 0, 0, 0, 0])

    def drop(self, path):
        """Drags a file onto the window and lets go of it; whether it was taken."""
        atom = self.display.intern_atom
        target = self.windows()[0]
        source = self.display.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        source.set_selection_owner(atom("XdndSelection"), X.CurrentTime)
        where = target.get_geometry()
        middle = (where.x + 20 << 16) | (where.y + 20)
        self._tell(target, "XdndEnter", [source.id, 5 << 24, atom("text/uri-list"), 0, 0])
        self._tell(target, "XdndPosition", [source.id, 0, middle, X.CurrentTime, atom("XdndActionCopy")])
        while True:
            each = eventually(lambda: self.display.pending_events() and self.display.next_event(), "an answer")
            if each.type == X.SelectionRequest:
                uri = pathlib.Path(path).as_uri() + "\r\n"
                each.requestor.change_property(each.property, each.target, 8, uri.encode())
                names = ("time", "requestor", "selection", "target", "property")
                answer = event.SelectionNotify(**{name: getattr(each, name) for name in names})
                each.requestor.send_event(answer)
                self.display.flush()
            elif each.type == X.ClientMessage and each.client_type == atom("XdndStatus"):
                accepted = each.data[1][1] & 1
                self._tell(target, "XdndDrop" if accepted else "XdndLeave", [source.id, 0, X.CurrentTime, 0, 0])
                if not accepted:
                    return False
            elif each.type == X.ClientMessage and each.client_type == atom("XdndFinished"):
                return True

    def ends(self, seconds=10):
        """The exit status, for which the program has little time."""
        return self.process.wait(timeout=seconds)
