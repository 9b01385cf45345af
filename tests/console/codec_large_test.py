"""The codec's commands on files as large as they may be, and on one that is larger."""

import os
import random
import resource
import subprocess

from ventoctl import ConsoleTest

GIB = 1 << 30


class Large(ConsoleTest):
    def test_a_gibibyte_goes_there_and_back_in_little_more_memory_than_the_result_takes(self):
        source, container, back = (str(self.folder / name) for name in ("source", "container", "back"))
        with open(source, "wb") as file:
            file.truncate(GIB)
            for place in range(0, GIB, GIB // 1000):
                file.seek(place)
                file.write(random.Random(place).randbytes(100))
        mebibytes = lambda: resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024
        self.run_console(0, "encode", source, container)
        self.assertLess(mebibytes(), os.path.getsize(container) / (1 << 20) + 64)
        self.run_console(0, "decode", container, back)
        self.assertLess(mebibytes(), 1024 + 64)
        subprocess.run(["cmp", source, back], check=True)

    def test_more_than_2147483647_bits_are_an_overflow(self):
        source = self.file("source", 300 * random.Random(1).randbytes(1 << 20))
        answer = self.run_json(65, "encode", source, source)
        self.assertEqual((answer["error"]["kind"], answer["events"]), ("overflow", [1, 2, 3, 4, 5, 6, 7]))
        self.assertEqual(os.path.getsize(source), 300 << 20)
