"""Drives the window of Qt from outside, by the accessibility tree, and by X11 for what a tree can't do."""

import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import threading
import time

import common
from common import eventually


try:
    import gi

    gi.require_version("Atspi", "2.0")
    if not shutil.which("openbox"):
        raise ImportError("no openbox")
    from gi.repository import Atspi, Gio, GLib
    from Xlib import X, display
    from Xlib.protocol import event
except (ImportError, ValueError) as missing:
    print("skipped:", missing)
    sys.exit(1 if os.environ.get("VENTO_SKIP_NOTHING") else 77)


def inside_a_desktop():
    """Runs this script again on a screen and a session bus of its own; comes back on the inside."""
    if "VENTO_TEST_SCREEN" not in os.environ:
        on_screen = str(pathlib.Path(__file__).with_name("on_screen"))
        os.execv(on_screen, [on_screen, "dbus-run-session", "--", sys.executable, *sys.argv])


def native(path):
    return str(path)


def below(node):
    for child in filter(None, map(node.get_child_at_index, range(node.get_child_count()))):
        yield child
        yield from below(child)


def shows(node, state=Atspi.StateType.SHOWING):
    return node.get_state_set().contains(state)


def environment(**variables):
    """Nothing of the tester's own that changes how a window looks or what it says."""
    own = ("QT_", "LC_", "LANG", "GTK_", "XDG_CURRENT_DESKTOP", "XDG_CONFIG", "XDG_DATA_HOME", "DESKTOP_SESSION", "KDE_")
    kept = {name: value for name, value in os.environ.items() if not name.startswith(own)}
    return kept | {"QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"} | variables


@contextlib.contextmanager
def screen(size, scale):
    """Another screen, with a window manager; what a window there is opened with."""
    reading, writing = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", size + "x24", "-nolisten", "tcp", "-noreset"],
                              pass_fds=[writing], stderr=subprocess.DEVNULL)
    try:
        name = f":{int(os.read(reading, 10))}"
        manager = subprocess.Popen(["openbox"], env=environment(DISPLAY=name), stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        watched = display.Display(name)  # one that comes later than a window may lose it
        sign = watched.intern_atom("_NET_SUPPORTING_WM_CHECK")
        eventually(lambda: watched.screen().root.get_full_property(sign, X.AnyPropertyType), "the window manager")
        watched.close()
        yield {"DISPLAY": name, "scale": scale}
    finally:
        for process in (manager, server):
            process.kill()
            process.wait()
        os.close(reading), os.close(writing)


class Desktop:
    """The session bus: the settings that a desktop tells of, and what it is told for the program's icon."""

    SETTINGS = "org.freedesktop.portal.Settings"
    PORTAL = f"""<node><interface name="{SETTINGS}"><method name="Read"><arg direction="in" type="s"/>
        <arg direction="in" type="s"/><arg direction="out" type="v"/></method><signal name="SettingChanged">
        <arg type="s"/><arg type="s"/><arg type="v"/></signal></interface></node>"""
    PATH = "/org/freedesktop/portal/desktop"

    def __enter__(self):
        self.values, self.told = {"contrast": 0, "color-scheme": 1}, []
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        interface = Gio.DBusNodeInfo.new_for_xml(self.PORTAL).interfaces[0]
        self.object = self.bus.register_object(self.PATH, interface, self.answer)
        self.listener = self.bus.signal_subscribe(None, "com.canonical.Unity.LauncherEntry", "Update", None, None, 0,
                                  lambda *event: self.told.append(event[5].unpack()))
        self.name = Gio.bus_own_name_on_connection(self.bus, "org.freedesktop.portal.Desktop", 0)
        self.loop = GLib.MainLoop()
        self.thread = threading.Thread(target=self.loop.run)
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.loop.quit()
        self.thread.join()
        Gio.bus_unown_name(self.name)
        self.bus.signal_unsubscribe(self.listener)
        self.bus.unregister_object(self.object)

    def answer(self, _bus, _sender, _path, _interface, _method, arguments, invocation):
        space, key = arguments.unpack()
        if space == "org.freedesktop.appearance" and key in self.values:
            value = GLib.Variant("v", GLib.Variant("u", self.values[key]))
            invocation.return_value(GLib.Variant.new_tuple(GLib.Variant("v", value)))
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "there is no such setting")

    def change(self, key, value):
        self.values[key] = value
        news = GLib.Variant("(ssv)", ("org.freedesktop.appearance", key, GLib.Variant("u", value)))
        self.bus.emit_signal(None, self.PATH, self.SETTINGS, "SettingChanged", news)


class Window(common.WindowOnScreen):
    SCALES = (1, 2)

    def __init__(self, program, folder, *arguments, language="it", simulate="1", scale=1, prepare=None, **more):
        self.scale = scale
        locale, self.nameless, self.field = {"it": ("it_IT.UTF-8", "Stato", "Nome file:"),
                                             "en": ("en_GB.UTF-8", "Status", "File name:")}[language]
        variables = environment(LANG=locale, VENTO_SIMULATE=simulate, QT_SCALE_FACTOR=str(scale), **more)
        self.process = subprocess.Popen([program, *map(str, arguments)], cwd=folder, env=variables, preexec_fn=prepare,
                                        stderr=subprocess.DEVNULL)
        self.screen = more.get("DISPLAY")
        nodes = eventually(self.tree, "the window in the accessibility tree")
        eventually(self.windows, "the window on the screen")
        self.known = {(node.get_role_name(), node.get_name()): node for node in nodes}
        self.label, self.gauge = (next((node for node in nodes if node.get_role_name() == role), None)
                                  for role in ("notification", "progress bar"))

    @contextlib.contextmanager
    def spoken(self):
        """What a screen reader speaks of its own accord, as a function that gives all of it so far."""
        heard = []

        def hear(event, *_):
            with contextlib.suppress(GLib.Error):  # of a window that has gone
                role = event.source.get_role_name()
                if role == "notification" and event.detail1:
                    heard.append(event.source.get_name())
                elif role == "progress bar" and event.type.endswith("value"):
                    heard.append(round(Atspi.Value.get_current_value(event.source)))

        def so_far():
            while GLib.MainContext.default().iteration(False):
                pass
            return heard
        listener = Atspi.EventListener.new(hear)
        kinds = "object:state-changed:showing", "object:property-change:accessible-value"
        for kind in kinds:
            listener.register(kind)
        yield so_far
        for kind in kinds:
            listener.deregister(kind)

    # The accessibility tree.

    def tree(self):
        desktop = Atspi.get_desktop(0)
        desktop.set_cache_mask(Atspi.Cache.NONE)
        for application in map(desktop.get_child_at_index, range(desktop.get_child_count())):
            if application and application.get_process_id() == self.process.pid:
                application.set_cache_mask(Atspi.Cache.NONE)
                return list(below(application))
        return []

    def all(self, *roles):
        """What is on the screen of those roles, looked for again where something goes meanwhile."""
        return eventually(lambda: [[n for n in self.tree() if n.get_role_name() in roles and shows(n)]], roles)[0]

    def names(self, *roles):
        return [node.get_name() for node in self.all(*roles)]

    def one(self, role, name):
        # A running operation lets the program answer only now and then: what is known already isn't looked for again.
        def look():
            found = self.known.get((role, name))
            return [found] if found and shows(found) else [n for n in self.all(role) if n.get_name() == name]
        return eventually(look, f"a {role} {name}")[0]

    def frame(self):
        area, (left, top) = self.windows()[0].get_geometry(), self.corner()
        return self.names("frame")[0], [left, top, left + area.width, top + area.height], [area.width, area.height]

    def places(self):
        corner = Atspi.Component.get_position(self.one("frame", self.frame()[0]), Atspi.CoordType.SCREEN)

        def place(node):
            box = Atspi.Component.get_extents(node, Atspi.CoordType.SCREEN)
            left, top = box.x - corner.x, box.y - corner.y
            return [self.scale * each for each in (left, top, left + box.width, top + box.height)]
        nodes = self.all("image", "push button", "list", "notification")
        return {node.get_name().split(":")[0]: place(node) for node in nodes}

    def buttons(self):
        return self.names("push button")

    def press(self, name):
        Atspi.Action.do_action(self.one("push button", name), 0)

    def description(self, name):
        return self.one("push button", name).get_description()

    def descriptions(self, role):
        return [node.get_description() for node in self.all(role)]

    def enabled(self, name):
        return shows(self.one("push button", name), Atspi.StateType.ENABLED)

    def status(self):
        return self.label.get_name().replace(self.nameless, "")

    def items(self):
        return [[child.get_name() for child in below(box)] for box in self.all("list")]

    def bar(self):
        if shows(self.gauge):
            return [Atspi.Value.get_current_value(self.gauge), Atspi.Value.get_maximum_value(self.gauge)]

    def focus(self):
        self.activate()
        return "".join(node.get_name().split(":")[0] for node in self.all("push button", "list")
                       if shows(node, Atspi.StateType.FOCUSED))

    def shows_a_dialog(self):
        return bool(self.all("dialog", "alert"))

    def box(self):
        self.one("push button", "OK")
        return self.names("label")

    def dialog(self):
        field = self.one("text", self.field)
        return self.names("dialog")[0], Atspi.Text.get_text(field, 0, -1)

    def fill(self, path=None):
        if path:
            Atspi.EditableText.set_text_contents(self.one("text", self.field), str(path))
        self.key("Return" if path else "Escape")
        eventually(lambda: not self.all("dialog") or self.field not in self.names("text"), "the end of the dialog")

    # What X11 alone can do.

    def numbers(self, window, name):
        value = window.get_full_property(self.display.intern_atom(name), X.AnyPropertyType)
        return list(value.value) if value else []

    def windows(self):
        frames = self.root().query_tree().children  # those of a window manager, or the windows themselves
        inside = (w for frame in frames for w in (frame, *frame.query_tree().children))
        return [w for w in inside if self.numbers(w, "_NET_WM_PID") == [self.process.pid]
                and w.get_attributes().map_state == X.IsViewable]

    def corner(self):
        place = self.root().translate_coords(self.windows()[0], 0, 0)
        return place.x, place.y

    def activate(self):
        # As a window manager does with the topmost window of the program.
        self.windows()[-1].set_input_focus(X.RevertToParent, X.CurrentTime)
        self.display.sync()

    def key(self, chord):
        self.activate()
        time.sleep(0.05)
        super().key(chord)

    def tell(self, kind, *data, by=None):
        form = self.windows()[0]
        data = [*data, 0, 0, 0, 0, 0][:5]  # there is room for five numbers
        message = event.ClientMessage(window=form, client_type=self.display.intern_atom(kind), data=(32, data))
        (by or form).send_event(message, X.SubstructureRedirectMask if by else 0)
        self.display.flush()

    def close(self):
        if self.numbers(self.root(), "_NET_SUPPORTING_WM_CHECK"):
            self.tell("_NET_CLOSE_WINDOW", by=self.root())
        else:
            self.tell("WM_PROTOCOLS", self.display.intern_atom("WM_DELETE_WINDOW"))

    @contextlib.contextmanager
    def covered(self):
        """Behind another program, if there is a window manager."""
        other = self.root().create_window(0, 0, 400, 400, 0, X.CopyFromParent)
        other.map()
        eventually(lambda: self.numbers(self.root(), "_NET_ACTIVE_WINDOW") == [other.id], "the other window in front")
        yield
        other.destroy()
        self.display.sync()

    def calls_for_attention(self):
        atom = self.display.intern_atom("_NET_WM_STATE_DEMANDS_ATTENTION")
        return atom in self.numbers(self.windows()[0], "_NET_WM_STATE")

    def end_session(self):
        self.process.terminate()

    def drop(self, path):
        """Drags a file onto the window and lets go of it; whether it was taken."""
        atom = self.display.intern_atom
        source = self.root().create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        source.set_selection_owner(atom("XdndSelection"), X.CurrentTime)
        left, top, *_ = self.frame()[1]
        self.tell("XdndEnter", source.id, 5 << 24, atom("text/uri-list"))
        self.tell("XdndPosition", source.id, 0, left + 20 << 16 | top + 20, X.CurrentTime, atom("XdndActionCopy"))
        while True:
            each = eventually(lambda: self.display.pending_events() and self.display.next_event(), "an answer")
            if each.type == X.SelectionRequest:
                each.requestor.change_property(each.property, each.target, 8, path.as_uri().encode() + b"\r\n")
                names = ("time", "requestor", "selection", "target", "property")
                each.requestor.send_event(event.SelectionNotify(**{name: getattr(each, name) for name in names}))
                self.display.flush()
            elif each.type == X.ClientMessage and each.client_type == atom("XdndStatus"):
                if not each.data[1][1] & 1:
                    self.tell("XdndLeave", source.id)
                    return False
                self.tell("XdndDrop", source.id)
            elif each.type == X.ClientMessage and each.client_type == atom("XdndFinished"):
                return True
