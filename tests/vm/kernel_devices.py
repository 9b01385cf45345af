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


def wait_for(get: Callable):
    deadline = time.monotonic() + BOUND
    while not (got := get()):
        if time.monotonic() > deadline:
            raise TimeoutError("what was waited for did not come")
        time.sleep(0.01)
    return got


def hidraw_nodes() -> list[str]:
    return sorted(str(node) for node in pathlib.Path("/dev").glob("hidraw*"))


class Simulator:
    """vento-simulator at work on a scenario, from when its devices are there."""

    def __init__(self, program: pathlib.Path, scenario: dict):
        self._file = tempfile.NamedTemporaryFile("w", suffix=".json")
        json.dump(scenario, self._file)
        self._file.flush()
        self._process = subprocess.Popen([program, self._file.name], stdout=subprocess.PIPE, text=True)
        self.lines: list[str] = []
        self._reader = threading.Thread(target=lambda: self.lines.extend(map(str.strip, self._process.stdout)))
        self._reader.start()
        self.wait_for_line("ready")

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
    _DESCRIPTOR = bytes.fromhex("0600ff0901a101150026ff007508954009018102090191 02c0")

    def __init__(self, reply: Callable[[bytes], Iterable[bytes]]):
        before = hidraw_nodes()
        self._reply = reply
        self._kernel = os.open("/dev/uhid", os.O_RDWR)
        identity = struct.pack("<HHIIII", len(self._DESCRIPTOR), 3, 1240, 1, 0, 0)
        names = b"bent transmitter".ljust(128, b"\0") + bytes(64) + bytes(64)
        os.write(self._kernel, struct.pack("<I", self._CREATE) + names + identity + self._DESCRIPTOR)
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


def good_reply(frame: bytes) -> list[bytes]:
    """What a remote without sections answers: a good status and the echo of the command, then zeros."""
    return [bytes([0, frame[5]]).ljust(64, b"\0")] if frame[1] == ord("U") and frame[-1] else []


def is_poll(frame: bytes) -> bool:
    return frame[1] == ord("U") and frame[5] == 165
