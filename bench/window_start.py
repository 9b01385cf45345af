#!/usr/bin/python3
"""window_start.py FOLDER [RUNS]: the time from start to a painted window, and the memory, of `vento` and of an empty
window, both from the bin folder of a build, in turns on a screen of their own. Needs Xvfb and python3-xlib."""

import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from Xlib import X, display


def painted(screen, x, y):
    image = screen.root.get_image(x, y, 1, 1, X.ZPixmap, 0xFFFFFF)
    return image.data[:3] != b"\0\0\0"


def memory(pid):
    """Private and shared memory in MiB, the shared shared out among its users."""
    fields = dict(line.split(":") for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()[1:])
    return [int(fields[key].split()[0]) / 1024 for key in ("Rss", "Pss")]


def start(command, screen, environment):
    began = time.perf_counter()
    process = subprocess.Popen(command, env=environment, stderr=subprocess.DEVNULL)
    while not painted(screen, 800, 600) and not painted(screen, 300, 300):
        time.sleep(0.0005)
    took = time.perf_counter() - began
    time.sleep(0.3)
    used = memory(process.pid)
    process.terminate()
    process.wait()
    while painted(screen, 800, 600) or painted(screen, 300, 300):
        time.sleep(0.001)
    return [took * 1000, *used]


def main(folder, runs):
    example = pathlib.Path(__file__).parent.parent / "examples" / "VENTO-esempio.qlb"
    with tempfile.TemporaryDirectory() as place:
        shown, out = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(out), "-screen", "0", "1600x1200x24", "-nolisten", "tcp"],
                                  pass_fds=[out], stderr=subprocess.DEVNULL)
        try:
            name = ":" + os.read(shown, 16).decode().strip()
            environment = os.environ | {"DISPLAY": name, "XDG_RUNTIME_DIR": place, "VENTO_SIMULATE": "1"}
            screen = display.Display(name).screen()
            figures = {"empty_window": [], "vento": [], "vento FILE": []}
            for _ in range(runs):
                for title, taken in figures.items():
                    command = [f"{folder}/{title.split()[0]}"]
                    if title.endswith("FILE"):
                        command.append(shutil.copy(example, place))
                    taken.append(start(command, screen, environment))
        finally:
            server.terminate()
            server.wait()
    for title, taken in figures.items():
        took, rss, pss = ([each[i] for each in taken] for i in range(3))
        print(f"{title:14} {statistics.median(took):6.0f} ms (least {min(took):.0f})"
              f"  RSS {statistics.median(rss):.1f} MiB  PSS {statistics.median(pss):.1f} MiB")


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 15)
