"""What a trace is good for: told in words, with the first deviation from the protocol, and the same run again."""

import json

from ventoctl import ConsoleTest, programme

EN = ["--language", "en"]


class TraceTest(ConsoleTest):
    def record(self, status, *arguments, **scenario):
        """The lines of a run's trace, and what it answered."""
        path = self.folder / "trace.jsonl"
        answer = self.run_json(status, *arguments, self.simulate(**scenario), "--trace", str(path))
        return path.read_text().splitlines(keepends=True), answer

    def explain(self, lines, status=0):
        return self.run_json(status, "explain", self.file("cut.jsonl", "".join(lines)), *EN)


class Explain(TraceTest):
    def test_every_frame_is_told_with_its_arguments_and_its_reply(self):
        lines, answer = self.record(
            0, "program", self.file("VENTO-x.qlb", programme(40)), reportMicroseconds=100,
            remote={"arrivesAtPoll": 4, "sections": [256, 512]},
        )  # fmt: skip
        for line in lines:
            self.assertRegex(line, r'^{"cycle":\d+,"seconds":\d+\.\d{6},"event":')
        steps = [json.loads(line) for line in lines]
        seconds = [step["seconds"] for step in steps]
        self.assertEqual((seconds[0], seconds, steps[-1]["cycle"]), (0, sorted(seconds), answer["cycles"]))
        self.assertGreater(seconds[-1], 0.001)
        poll = [step["report"] for step in steps if step["cycle"] == 9 and "report" in step]
        self.assertEqual(poll, ["000755010001a501".ljust(130, "0"), "0000a5".ljust(130, "0")])
        out = self.run_console(0, "explain", "trace.jsonl", *EN)[0]
        told = [line.split("  ")[-1] for line in out.splitlines()]
        for wanted in (
            "search for the transmitter: found, first kind (vendor id 1240)", "link timing, first kind: not answered, as expected",
            "wait for the remote (165): 13 polls, 10 answered well", "version (6): 3.0, build 4",
            "section count (4): 2", "section offsets (5): TV 256, DTT 512", "flag value, 24: announces section TV: acknowledged",
            "block header, 16 bytes of data from 288: not answered, as expected", "words to verify, from 512, 40 in all: checksum 66, right",
            "flag value, 176: closes, written TV, DTT: acknowledged", "section state (8, 2): free: SAT",
            "activation of the first section, 64: acknowledged", "The operation ends here.",
        ):  # fmt: skip
            self.assertIn(wanted, told, out)
        self.assertNotIn("deviation", out)
        self.record(0, "read", remote={"free": 96, "memory": {"256": [193, 194, 195]}})
        out = self.run_console(0, "explain", "trace.jsonl", "--language", "it")[0]
        self.assertIn('parole da leggere, 8 da 256: nome "ABC', out)
        self.assertIn("temporizzazione del collegamento, primo tipo: senza risposta", out)
        self.assertIn("segni delle sezioni libere (8, 5): libere: DTT, SAT", out)
        self.assertTrue(out.endswith("L'operazione è finita qui.\n"), out)

    def test_each_fault_is_found_where_it_is_and_the_trace_gives_the_same_outcome_again(self):
        path = self.file("VENTO-x.qlb", programme(40))
        for command, cycle, fault, reason in (
            ("program", 1, {"kind": "unplugged"}, None), ("program", 3, {"kind": "unplugged"}, "no transmitter was found"),
            ("program", 3, {"kind": "writeFails"}, "did not take the report"), ("program", 6, {"kind": "readFails"}, None),
            ("program", 14, {"kind": "unplugged"}, "no transmitter was found"), ("program", 14, {"kind": "readFails"}, "no reply"),
            ("program", 15, {"kind": "reply", "bytes": [0, 4, 9]}, "9; 1 to 3 were expected"),
            ("program", 16, {"kind": "status", "value": 3}, "refused, status 3"), ("program", 17, {"kind": "flip", "byte": 1, "mask": 8}, "echo 15 instead of 7"),
            ("program", 19, {"kind": "readFails"}, "no reply"), ("program", 21, {"kind": "flip", "byte": 1, "mask": 1}, "checksum"),
            ("program", 26, {"kind": "flip", "byte": 1, "mask": 1}, "checksum"), ("program", 26, {"kind": "writeFails"}, "did not take"),
            ("program", 49, {"kind": "status", "value": 1}, "refused"), ("program", 51, {"kind": "flip", "byte": 1, "mask": 4}, None),
            ("program", 51, {"kind": "flip", "byte": 1, "mask": 1}, "echo 1 instead of 0"),
            ("read", 15, {"kind": "readFails"}, "no reply"), ("read", 17, {"kind": "status", "value": 1}, "refused, status 1"),
            ("read", 17, {"kind": "readFails"}, None), ("read", 33, {"kind": "readFails"}, "no reply"), ("read", 41, {"kind": "status", "value": 7}, "status 7"),
        ):  # fmt: skip
            with self.subTest(command=command, cycle=cycle, fault=fault):
                arguments = [command] + ([path] if command == "program" else []) + EN
                lines, recorded = self.record(None, *arguments, faults=[{"cycle": cycle, **fault}])
                deviation = self.explain(lines)["firstDeviation"]
                if reason:
                    self.assertEqual(deviation and deviation["cycle"], cycle)
                    self.assertIn(reason, deviation["reason"])
                else:
                    self.assertIsNone(deviation)
                again = self.run_json(None, *arguments, "--simulate=trace.jsonl")
                self.assertEqual({**again, "seconds": 0}, {**recorded, "seconds": 0})

    def test_a_trace_is_told_wherever_it_is_cut_and_followed_from_the_middle(self):
        lines, _ = self.record(0, "program", self.file("VENTO-x.qlb", programme(40)))
        for count in range(1, len(lines), 7):
            self.assertIsNone(self.explain(lines[:count])["firstDeviation"], count)
            rest = self.explain([lines[count][20:], *lines[count + 1 :]])
            self.assertIsNone(rest["firstDeviation"], count)
            self.assertEqual(rest["ending"], "The operation ends here.")
        at = next(index for index, line in enumerate(lines) if '"cycle":26,' in line and '"write"' in line)
        self.assertIn("breaks off; expected here: words to verify", self.explain([*lines[:at], lines[at][:30]])["ending"])
        known = self.explain(lines)
        later = [json.dumps({**json.loads(line), "time": 5, "new": [1]}) + "\r\n" for line in lines]
        self.assertEqual(self.explain(later), known)

    def test_what_verify_and_plan_send_is_of_the_protocol_too(self):
        path, image = self.file("VENTO-x.qlb", programme(40)), {"image": "image.json"}
        self.record(0, "program", path, **image)
        for status, command, cycle, reason in ((0, "verify", 0, None), (0, "plan", 0, None), (18, "verify", 20, "checksum")):
            faults = [{"cycle": cycle, "kind": "flip", "byte": 1, "mask": 9}] if cycle else []
            lines, _ = self.record(status, command, path, faults=faults, **image)
            told = self.explain(lines)
            self.assertEqual((told["firstDeviation"], told["ending"]), (None, "The operation ends here."), (command, reason))

    def test_what_goes_out_against_the_protocol_is_marked_too(self):
        lines, _ = self.record(0, "program", self.file("VENTO-x.qlb", programme(40)))
        steps = [json.loads(line) for line in lines]

        def altered(cycle, place, byte):
            return [
                json.dumps({**step, "report": step["report"][: 2 * place] + f"{byte:02x}" + step["report"][2 * place + 2 :]}) + "\n"
                if step["cycle"] == cycle and step["event"] == "write" else line for step, line in zip(steps, lines)
            ]  # fmt: skip

        def without(*cycles):
            return [line for step, line in zip(steps, lines) if step["cycle"] not in cycles]

        for changed, cycle, reason in (
            (altered(3, 4, 9), 3, "not the timing"), (altered(14, 3, 2), 14, "LinkFactor: 2 instead of 1"),
            (altered(23, 7, 33), 23, "offset: 289 instead of 288"), (altered(26, 9, 8), 26, "last index: 8 instead of 39"),
            (altered(48, 6, 208), 48, "flag value: 208 instead of 240"), (without(3), 4, "expected here: link timing"),
            (without(13), 14, "expected here: wait for the remote"), (without(25, 26), 27, "expected here: verify (2)"),
            (without(18), 19, "expected here: flag value"),
        ):  # fmt: skip
            deviation = self.explain(changed)["firstDeviation"]
            self.assertEqual(deviation and deviation["cycle"], cycle, reason)
            self.assertIn(reason, deviation["reason"])

    def test_what_is_no_trace_is_refused_with_its_line(self):
        lines, _ = self.record(0, "read")
        for content, status, words in (
            ("1;A;1;;\n1;A;2;;\n", 65, "line 1: expected JSON"), ("", 65, "no step"), ("{}\n", 65, "cycle: expected"),
            (lines[0] + '{"cycle":1,"event":"jump"}\n' + lines[1], 65, "line 2: event: expected"),
            (lines[0] + '{"cycle":1,"event":"write","ok":true,"report":"00x"}\n\n', 65, "line 2: report: expected"),
        ):  # fmt: skip
            self.assertIn(words, self.run_console(status, "explain", self.file("x", content), *EN)[1])
        self.assertIn("none: ", self.run_console(66, "explain", "none")[1])


class Replay(TraceTest):
    def test_a_conversation_that_differs_from_the_recorded_one_says_where(self):
        path = self.file("VENTO-x.qlb", programme(40))
        lines, _ = self.record(0, "program", path)
        other = self.file("VENTO-y.qlb", programme(41))
        for arguments, kept, words in (
            (["read"], len(lines), "cycle 15: 07550100010801 now goes out, in the trace 07550100010402"),
            (["program", other], len(lines), "cycle 23: 095501"), (["program", path], 60, "ends with cycle"), (["program", path], 61, "ends with cycle"),
        ):  # fmt: skip
            self.file("trace.jsonl", "".join(lines[:kept]))
            self.assertIn(words, self.run_console(65, *arguments, "--simulate=trace.jsonl", *EN)[1])
        taken = self.run_json(0, "devices", "--simulate=trace.jsonl")["interfaces"]
        self.assertEqual([(each["vendorId"], each["taken"]) for each in taken], [(1240, True)])
        self.run_console(64, "read", "--simulate=trace.jsonl", "--trace", "trace.jsonl")
