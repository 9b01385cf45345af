"""HID devices of the kernel for the tests in the virtual machine: the simulator's, and some that misbehave."""

import json
import os
import pathlib
import struct
import subprocess
import tempfile
import threading
import time
from collections.abc import Callable, Iterable

BOUND = 120  # seconds until something that is to come is given up


DESCRIPTOR = bytes.fromhex("0600ff0901a101150026ff007508954009018102090191 02c0")  # reports of 64 bytes, a vendor's own


def wait_for(get: Callable):
    deadline = time.monotonic() + BOUND
    while not (got := get()):
        if time.monotonic() > deadline:
            raise TimeoutError("what was waited for did not come")
        time.sleep(0.01)
    return got


def write_programme(path: pathlib.Path, size: int) -> None:
    """Three columns with lists A and B, which read back as PROVA 1A and so on with `size` bytes behind it."""
    codes = lambda name: [ord(letter) + 128 for letter in name] + list(range(size))
    lines = [f"{name[0]};Prova;{','.join(map(str, codes('PROVA ' + name)))};x;y\n" for name in ("1A", "1B", "2A", "2B", "3A", "3B")]
    path.write_text("".join(lines))


def hidraw_nodes() -> list[str]:
    return sorted(str(node) for node in pathlib.Path("/dev").glob("hidraw*"))


class DeviceManager:
    """The system's udevd, with the rules that it finds, from when it listens."""

    def __init__(self):
        self._process = subprocess.Popen(["/lib/systemd/systemd-udevd"], stderr=subprocess.DEVNULL)
        ping = ["udevadm", "control", "--ping"]
        wait_for(lambda: subprocess.run(ping, stderr=subprocess.DEVNULL).returncode == 0)

    def stop(self) -> None:
        self._process.terminate()
        self._process.wait()


class Simulator:
    """vento-simulator at work on a scenario, from when its devices are there."""

    def __init__(self, program: pathlib.Path, scenario: dict, *options: str):
        self._file = tempfile.NamedTemporaryFile("w", suffix=".json")
        json.dump(scenario, self._file)
        self._file.flush()
        self._process = subprocess.Popen([program, *options, self._file.name], stdout=subprocess.PIPE, text=True)
        self.lines: list[str] = []
        self._reader = threading.Thread(target=lambda: self.lines.extend(map(str.strip, self._process.stdout)))
        self._reader.start()
        self.wait_for_line("ready")
        wait_for(lambda: len(hidraw_nodes()) >= len(scenario["interfaces"]) + ("--keyboard" in options))

    def wait_for_line(self, start: str, times: int = 1) -> None:
        wait_for(lambda: sum(line.startswith(start) for line in self.lines) >= times or self._process.poll() is not None)
        if self._process.poll() is not None:
            raise RuntimeError(f"the simulator ended with {self._process.returncode}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        status = self._process.wait()
        self._reader.join()
        self._process.stdout.close()
        self._file.close()
        if status != 0:
            raise RuntimeError(f"the simulator ended with {status}")


class BentTransmitter:
    """A transmitter whose replies are made by `reply`: it takes a frame and gives the reports to be sent back."""

    _CREATE, _OUTPUT, _INPUT = 11, 6, 12

    def __init__(self, reply: Callable[[bytes], Iterable[bytes]]):
        before = hidraw_nodes()
        self._reply = reply
        self._kernel = os.open("/dev/uhid", os.O_RDWR)
        identity = struct.pack("<HHIIII", len(DESCRIPTOR), 3, 1240, 1, 0, 0)
        names = b"bent transmitter".ljust(128, b"\0") + bytes(64) + bytes(64)
        os.write(self._kernel, struct.pack("<I", self._CREATE) + names + identity + DESCRIPTOR)
        wait_for(lambda: hidraw_nodes() != before)
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self) -> None:
        while True:
            event = os.read(self._kernel, 8192)
            kind = struct.unpack_from("<I", event)[0]
            if kind == self._OUTPUT:
                payload = event[5:]  # behind the kind and the report id
                for report in self._reply(payload[: payload[0]]):
                    os.write(self._kernel, struct.pack("<IH", self._INPUT, len(report)) + report)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.write(self._kernel, struct.pack("<I", 1))  # UHID_DESTROY
        wait_for(lambda: not hidraw_nodes())


class DeafUsbTransmitter:
    """A transmitter on USB that takes no report."""

    _GADGET = pathlib.Path("/sys/kernel/config/usb_gadget/deaf")

    def __init__(self):
        configuration, self._function = self._GADGET / "configs/c.1", self._GADGET / "functions/hid.deaf"
        configuration.mkdir(parents=True)
        (self._GADGET / "idVendor").write_text("1240")
        (self._GADGET / "idProduct").write_text("1")
        self._function.mkdir()
        (self._function / "report_length").write_text("64")
        (self._function / "report_desc").write_bytes(DESCRIPTOR)
        (configuration / self._function.name).symlink_to(self._function)
        (self._GADGET / "UDC").write_text("dummy_udc.0")
        wait_for(hidraw_nodes)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        (self._GADGET / "UDC").write_text("\n")
        wait_for(lambda: not hidraw_nodes())
        (self._GADGET / "configs/c.1" / self._function.name).unlink()
        for folder in (self._GADGET / "configs/c.1", self._function, self._GADGET):
            folder.rmdir()


class LoginManager:
    """On a system bus of its own: hands out locks that keep the computer awake, but none on a shutdown."""

    _INHIBIT = "<method name='Inhibit'>" + 4 * "<arg type='s' direction='in'/>" + "<arg type='h' direction='out'/></method>"
    _NAME, _PATH, _INTERFACE = "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"

    def __init__(self):
        from gi.repository import Gio, GLib

        self._daemon = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE, text=True
        )
        self.address = self._daemon.stdout.readline().strip()
        self.asked: list[tuple] = []
        self.lock: int | None = None  # the other end of it, which has nothing to read as long as it is held
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._bus = Gio.DBusConnection.new_for_address_sync(self.address, flags, None, None)

        def inhibit(*call):
            parameters, invocation = call[5:]
            self.asked.append(parameters.unpack())
            if "shutdown" in self.asked[-1][0]:
                return invocation.return_dbus_error("org.freedesktop.DBus.Error.AccessDenied", "not here")
            self.lock, theirs = os.pipe()
            locks = Gio.UnixFDList.new_from_array([theirs])
            invocation.return_value_with_unix_fd_list(GLib.Variant("(h)", (0,)), locks)

        xml = f"<node><interface name='{self._INTERFACE}'>{self._INHIBIT}</interface></node>"
        self._bus.register_object(self._PATH, Gio.DBusNodeInfo.new_for_xml(xml).interfaces[0], inhibit, None, None)
        named = threading.Event()
        Gio.bus_own_name_on_connection(self._bus, self._NAME, 0, lambda *_: named.set(), None)
        threading.Thread(target=GLib.MainLoop().run, daemon=True).start()
        named.wait(BOUND)

    def stop(self) -> None:
        self._daemon.terminate()
        self._daemon.wait()
        self._daemon.stdout.close()


def good_reply(frame: bytes) -> list[bytes]:
    """What a remote without sections answers: a good status and the echo of the command, then zeros."""
    return [bytes([0, frame[5]]).ljust(64, b"\0")] if frame[1] == ord("U") and frame[-1] else []


def is_poll(frame: bytes) -> bool:
    return frame[1] == ord("U") and frame[5] == 165
