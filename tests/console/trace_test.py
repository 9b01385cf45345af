"""The trace: what crosses the link, step by step, and whole up to the moment of whatever goes wrong."""

import json
import subprocess
import time
import unittest

from ventoctl import COMMAND, PLAIN_ENVIRONMENT, ConsoleTest, programme

PRESENCE = "00" + "0755010001a501".ljust(128, "0")


class Trace(ConsoleTest):
    def assert_paired(self, steps):
        """Each cycle: a search; if it found, writes and reads, and one close."""
        cycles = {}
        for step in steps:
            cycles.setdefault(step["cycle"], []).append(step)
        self.assertEqual(list(cycles), list(range(1, len(cycles) + 1)))
        for number, cycle in cycles.items():
            ends = [step["event"] for step in cycle if step["event"] in ("search", "close")]
            self.assertEqual(ends, ["search", "close"] if cycle[0]["found"] else ["search"], number)
            self.assertEqual([cycle[0]["event"], cycle[-1]["event"]], [ends[0], ends[-1]], number)

    def test_every_step_of_a_run_with_its_report(self):
        arguments = ["program", self.file("VENTO-x.qlb", programme(40)), self.simulate()]
        steps = self.trace_of(0, *arguments)
        self.assert_paired(steps)
        found = {"event": "search", "found": True, "vendorId": 1240, "productId": 1}
        self.assertEqual(steps[:2], [{"cycle": 1, **found}, {"cycle": 1, "event": "close"}])
        write, read = [step for step in steps if step["cycle"] == 4][1:3]
        self.assertEqual(write["report"], PRESENCE)
        self.assertEqual(read["report"], "00" + "00a5".ljust(128, "0"))
        self.assertEqual(self.run_json(0, *arguments)["cycles"], steps[-1]["cycle"])

    def test_failures_on_the_link_are_in_the_trace(self):
        for fault, status, wanted in (
            ({"kind": "unplugged", "cycle": 1}, 2, {"event": "search", "found": False}),
            ({"kind": "readFails", "cycle": 5}, 0, {"event": "read", "ok": False, "report": None}),
            ({"kind": "writeFails", "cycle": 5}, 0, {"event": "write", "ok": False, "report": PRESENCE}),
        ):
            steps = self.trace_of(status, "read", self.simulate(faults=[fault]))
            self.assert_paired(steps)
            cycle = [step for step in steps if step["cycle"] == fault["cycle"]]
            self.assertTrue(any(wanted.items() <= step.items() for step in cycle), cycle)

    def test_foreign_interfaces_are_not_traced_and_a_walk_traces_the_one_it_would_take(self):
        kinds = [{"vendorId": 7, "productId": 7}, {"vendorId": 11025, "productId": 2}, {"vendorId": 1240}]
        steps = self.trace_of(0, "devices", self.simulate(interfaces=kinds))
        found = {"cycle": 1, "event": "search", "found": True, "vendorId": 11025, "productId": 2}
        self.assertEqual(steps, [found, {"cycle": 1, "event": "close"}])

    def test_a_trace_is_whole_when_the_program_is_killed(self):
        path = self.folder / "trace.jsonl"
        path.write_text("what stood there before\n")
        arguments = ["read", self.simulate(remote=None, reportMicroseconds=1000), "--trace", str(path)]
        process = subprocess.Popen([*COMMAND, *arguments], env=PLAIN_ENVIRONMENT, stderr=subprocess.DEVNULL)
        while path.read_text().count("\n") < 20:
            time.sleep(0.01)
        process.kill()
        process.wait()
        self.assertTrue(path.read_text().endswith("}\n"))
        self.assertEqual(json.loads(path.read_text().splitlines()[0])["event"], "search")


if __name__ == "__main__":
    unittest.main()
