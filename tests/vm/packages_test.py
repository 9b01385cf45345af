#!/usr/bin/env python3
"""The Debian packages installed and removed; inside the virtual machine, as root.

packages_test.py FOLDER: the one that the packages lie in.
"""

import os
import pathlib
import subprocess
import sys
import unittest

from kernel_devices import DeviceManager, Simulator, hidraw_nodes, wait_for

PROGRAMME = pathlib.Path(__file__).resolve().parents[2] / "examples/VENTO-esempio.qlb"
GLOBS = pathlib.Path("/usr/share/mime/globs")
FILES = list(pathlib.Path(sys.argv.pop(1)).glob("*.deb"))
NAMES = ["libvento-codec-dev", "libvento-codec1", "vento", "vento-console", "vento-simulator"]
DPKG = ["dpkg", "--force-unsafe-io"]  # what is written in there is in memory


def output(*command) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Packages(unittest.TestCase):
    def test_they_work_at_once_and_leave_nothing_behind(self):
        manager = DeviceManager()
        self.addCleanup(manager.stop)
        pathlib.Path("/var/lib/man-db/auto-update").unlink(missing_ok=True)  # its index of all pages takes minutes here
        output(*DPKG, "-i", *FILES)
        installed = [line for name in NAMES for line in output("dpkg", "-L", name).splitlines()]
        self.assertIn("application/x-vento-programme:*.qlb", GLOBS.read_text())
        self.assertIn("libvento_codec.so.1 ", output("ldconfig", "-p"))
        self.assertTrue(output("pkg-config", "--modversion", "vento-codec"))
        self.assertNotIn("not found", output("ldd", "/usr/bin/vento"))

        scenario = {"interfaces": [{"vendorId": 1240, "productId": 83}], "reportMicroseconds": 0}
        with Simulator("/usr/bin/vento-simulator", scenario):
            (node,) = hidraw_nodes()
            wait_for(lambda: "uaccess" in output("udevadm", "info", node))
            self.assertIn(": written and verified", output("/usr/bin/ventoctl", "program", PROGRAMME, "--language=en"))

        output(*DPKG, "--purge", *NAMES)
        left = [path for path in installed if not os.path.isdir(path) and os.path.lexists(path)]
        self.assertEqual(left, [])
        self.assertNotIn("vento", GLOBS.read_text())
        self.assertNotIn("vento", output("ldconfig", "-p"))


if __name__ == "__main__":
    unittest.main()
