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
            events = [step["event"] for step in cycle]
            self.assertEqual(events[0], "search", number)
            self.assertEqual(events.count("search"), 1, number)
            self.assertEqual(events.count("close"), 1 if cycle[0]["found"] else 0, number)
            self.assertEqual(events[-1], "close" if cycle[0]["found"] else "search", number)

    def test_every_step_of_a_run_with_its_report(self):
        steps = self.trace_of(0, "program", self.file("VENTO-x.qlb", programme(40)), self.simulate())
        self.assert_paired(steps)
        found = {"event": "search", "found": True, "vendorId": 1240, "productId": 1}
        self.assertEqual(steps[:2], [{"cycle": 1, **found}, {"cycle": 1, "event": "close"}])
        timing = next(step for step in steps if step["event"] == "write")
        self.assertEqual(timing["cycle"], 3)
        self.assertEqual(timing["report"][:8], "0013540f")
        write, read = [step for step in steps if step["cycle"] == 4][1:3]
        self.assertEqual(write["report"], PRESENCE)
        self.assertEqual(read["report"], "00" + "00a5".ljust(128, "0"))
        for step in steps:
            if "report" in step:
                self.assertRegex(step["report"], "^00[0-9a-f]{128}$")
        answer = self.run_json(0, "program", self.file("VENTO-x.qlb", programme(40)), self.simulate())
        self.assertEqual(answer["cycles"], steps[-1]["cycle"])

    def test_failures_on_the_link_are_in_the_trace(self):
        for fault, status, wanted in (
            ({"kind": "unplugged", "cycle": 1}, 2, {"event": "search", "found": False}),
            ({"kind": "readFails", "cycle": 5}, 0, {"event": "read", "ok": False, "report": None}),
            ({"kind": "writeFails", "cycle": 5}, 0, {"event": "write", "ok": False}),
        ):
            steps = self.trace_of(status, "read", self.simulate(faults=[fault]))
            self.assert_paired(steps)
            cycle = [step for step in steps if step["cycle"] == fault["cycle"]]
            self.assertTrue(any(wanted.items() <= step.items() for step in cycle), cycle)
            self.assertFalse(fault["kind"] == "writeFails" and cycle[1]["report"] is None)

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
        text = path.read_text()
        self.assertTrue(text.endswith("}\n"))
        steps = [json.loads(line) for line in text.splitlines()]
        self.assert_paired(steps[: max(i for i, step in enumerate(steps) if step["event"] == "close") + 1])


if __name__ == "__main__":
    unittest.main()
