"""The codec's commands on files as large as they may be, and on one that is larger."""

import os
import random
import subprocess
import sys
import unittest

from ventoctl import COMMAND, ConsoleTest

GIB = 1 << 30


class Large(ConsoleTest):
    def peak(self, status, *arguments):
        """Runs the program, which has to end with `status`; the most memory it had, in MiB."""
        process = subprocess.Popen([*COMMAND, *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, ended, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(ended)
        self.assertEqual(process.returncode, status)
        return usage.ru_maxrss / 1024

    def test_a_gibibyte_goes_there_and_back(self):
        source = self.folder / "source"
        with open(source, "wb") as file:
            file.truncate(GIB)
            for place in range(0, GIB, GIB // 1000):
                file.seek(place)
                file.write(random.Random(place).randbytes(100))
        encoding = self.peak(0, "encode", str(source), str(self.folder / "container"))
        decoding = self.peak(0, "decode", str(self.folder / "container"), str(self.folder / "back"))
        print(f"memory: {encoding:.0f} MiB to encode, {decoding:.0f} MiB to decode", file=sys.stderr)
        subprocess.run(["cmp", source, self.folder / "back"], check=True)
        both = 1024 + (self.folder / "container").stat().st_size / (1 << 20)
        self.assertLess(max(encoding, decoding), both + 16)

    def test_more_than_2147483647_bits_are_an_overflow(self):
        source = self.file("source", 300 * random.Random(1).randbytes(1 << 20))
        answer = self.run_json(65, "encode", source, source)
        self.assertEqual((answer["error"]["kind"], answer["events"]), ("overflow", [1, 2, 3, 4, 5, 6, 7]))
        self.assertEqual(os.path.getsize(source), 300 << 20)
        os.truncate(source, 2 * GIB)
        self.assertEqual(self.run_json(65, "encode", source, source)["error"]["kind"], "overflow")


if __name__ == "__main__":
    unittest.main()
