"""What the console program answers: statuses, the JSON object of every command, the words on both outputs."""

import json
import os
import pathlib
import unittest

from ventoctl import COMMAND, EXAMPLES, ConsoleTest, code_list, programme

PANEL_KEYS = [
    "operation", "diagnostic", "result", "message", "text1", "messageBox", "language", "label2",
    "programButton", "progressBar", "columns", "cycles", "seconds",
]  # fmt: skip
EXAMPLE = str(EXAMPLES / "VENTO-esempio.qlb")
FULL = "/dev/full"


class Usage(ConsoleTest):
    def test_wrong_usage_is_told_on_standard_error_with_status_64(self):
        for arguments in (
            [], ["program"], ["reed"], ["read", "--language", "deu"], ["read", "--bogus"], ["check", "a", "b"],
            ["read", "--consume"], ["read", "--simulate", "scenario.json"], ["read", "--trace"],
        ):  # fmt: skip
            out, err = self.run_console(64, *arguments)
            self.assertTrue(out == "" and err.startswith("ventoctl: "), (arguments, out, err))

    def test_help_and_version_are_results(self):
        for *arguments, wanted in (("--help", "--simulate[=SCENARIO]"), ("--version", "ventoctl ")):
            out, err = self.run_console(0, *arguments)
            self.assertTrue(wanted in out and err == "", out)


class Program(ConsoleTest):
    def test_a_programme_goes_in_and_is_read_back_by_name(self):
        simulate = self.simulate(image="remote-image.json")
        arguments = [simulate, "--language", "ita", "program", EXAMPLE]
        answer = self.run_json(0, *arguments)
        self.assertEqual(list(answer), PANEL_KEYS)
        self.assertGreater(answer.pop("cycles"), 100)
        self.assertGreater(answer.pop("seconds"), 0)
        columns = answer.pop("columns")
        self.assertEqual([column["label"] for column in columns], ["Città 100", "Beta 200", "Gamma 300"])
        self.assertTrue(columns[2]["listB"].startswith("199,193,205,205,193,160,179,194,"))
        bar = {"minimum": 0, "maximum": 1009, "value": answer["progressBar"]["value"], "visible": False}
        button = {"visible": True, "enabled": True}
        waiting = "Posizionare il telecomando di fronte al trasmettitore entro 1 minuto. Sincronizzazione in corso"
        done = "Programmazione eseguita con successo"
        self.assertEqual(self.run_console(0, *arguments), (done + "\n", waiting + "\n"))
        self.assertEqual(self.run_console(0, *arguments, "--quiet"), (done + "\n", ""))
        self.assertEqual(list(answer.values()), ["program", None, 0, done, "0", None, "ITA", EXAMPLE, button, bar])

        answer = self.run_json(0, "read", simulate)
        self.assertEqual(list(answer), PANEL_KEYS)
        self.assertEqual(answer["message"], "TV CITTA 1B\r\nDTT BETA  2B\r\nSAT GAMMA 3B\r\n")
        self.assertEqual(answer["text1"], answer["message"])
        self.assertEqual(answer["columns"], [{"label": None, "listA": None, "listB": None}] * 3)
        out, _ = self.run_console(0, "read", simulate)
        self.assertEqual(out, "TV CITTA 1B\nDTT BETA  2B\nSAT GAMMA 3B\n")

    def test_the_status_is_the_result_of_the_operation(self):
        unusable = self.file("VENTO-bad.qlb", "1;A;1,2,x;;\n1;A;1,2;;\n")
        for status, path, scenario, message in (
            (2, EXAMPLE, {"faults": [{"cycle": 2, "kind": "unplugged"}]}, "USB not connected"),
            (3, EXAMPLE, {"remote": None}, "Remote not detected, place the remote in front of the transmitter"),
            (15, unusable, {}, "Attention an error occurred! Repeat programming"),
        ):
            arguments = ["program", path, self.simulate(**scenario), "--language", "eng"]
            out, err = self.run_console(status, *arguments, "--quiet")
            answer = self.run_json(status, *arguments)
            self.assertEqual((out, answer["result"], answer["message"]), ("", status, message))
            self.assertTrue(err.startswith(f"ventoctl: {message}\n") and answer["diagnostic"] in err, err)

    def test_a_missing_transmitter_is_a_message_box_and_status_2_without_a_result(self):
        refused = {"vendorId": 1240, "productId": 1, "opens": False}
        for language, text, advice, *command in (
            ("ita", "Programmatore non collegato", "vieta", "program", EXAMPLE),
            ("eng", "Transmitter not connected", "does not let", "read"),
        ):
            arguments = [*command, self.simulate(interfaces=[]), "--language", language]
            answer = self.run_json(2, *arguments)
            self.assertEqual((answer["messageBox"], answer["result"]), (text, None))
            self.assertEqual(answer["diagnostic"], "No transmitter was found.")
            self.assertEqual(self.run_console(2, *arguments), ("", f"ventoctl: {text}\n"))
            self.simulate(interfaces=[refused])
            self.assertIn(advice, self.run_console(2, *arguments)[1])

    def test_a_programme_that_does_not_load_is_not_sent(self):
        for content, reason in (("1;A;1;;\n\n", "Line 2, field 1: missing"), ("", "The file is empty.")):
            path = self.file("VENTO-x.qlb", content)
            answer = self.run_json(65, "program", path, "--simulate")
            self.assertEqual(list(answer), PANEL_KEYS)
            self.assertEqual((answer["result"], answer["cycles"], answer["label2"]), (None, 0, path))
            self.assertIn(reason, answer["diagnostic"])
            self.assertIn(reason, self.run_console(65, "program", path, "--quiet")[1])
        self.assertIn("aprire il file", self.run_console(66, "program", "none.qlb", "--language", "ita")[1])

    def test_only_consume_deletes_the_file_and_does_so_whatever_comes(self):
        for status, content, scenario in (
            (0, programme(), {}),
            (2, programme(), {"interfaces": []}),
            (65, "1;2\n", {}),
        ):
            arguments = ["program", self.file("VENTO-x.qlb", content), self.simulate(**scenario)]
            for consume in ([], ["--consume"]):
                self.run_console(status, *arguments, *consume)
                self.assertEqual(os.path.exists(arguments[1]), not consume)


class Check(ConsoleTest):
    def test_the_lists_of_a_programme_with_length_name_and_line(self):
        out, err = self.run_console(0, "check", EXAMPLE, "--language", "ita")
        self.assertEqual(err, "")
        self.assertEqual(out.splitlines()[:2], ["TV   Città 100", "     A    312 byte  CITTA 1A  riga 1"])
        answer = self.run_json(0, "check", EXAMPLE)
        self.assertEqual(list(answer), ["operation", "diagnostic", "loads", "columns", "lists", "problem"])
        self.assertEqual((answer["loads"], answer["problem"], answer["diagnostic"]), (True, None, None))
        beta = {"column": "DTT", "list": "B", "bytes": 264, "name": "BETA  2B", "valid": True}
        self.assertEqual((answer["lists"][3], len(answer["lists"])), (beta, 6))

    def test_the_first_problem_with_its_place(self):
        short = code_list("AB", 4)
        for content, loads, line, field, reason in (
            (f"1;A;{short};;\n1;A;{short},256;;\n", True, 2, 2, 'piece 5: "256" is not a number from 0 to 255.'),
            (f"1;A;{short};;\n0;A;{short};;\n", False, 2, 0, "the column number has to be 1, 2 or 3."),
            (f"1;A;{short};\n", False, 1, 4, "missing"),
            ("\n" * 32768, False, None, None, "more than 32767 lines"),
        ):
            path = self.file("VENTO-x.qlb", content)
            answer = self.run_json(65, "check", path)
            problem = answer["problem"]
            self.assertEqual((answer["loads"], problem["line"], problem["field"]), (loads, line, field))
            self.assertIn(reason, problem["reason"])
            out, err = self.run_console(65, "check", path, "--quiet")
            self.assertTrue(reason in out and err == "", out)

    def test_a_label_does_not_steer_the_terminal_and_a_blank_list_is_none(self):
        path = self.file("VENTO-x.qlb", b"1;\x1b[31mRed\x81\x07;65;;\n2; ; ;;\n")
        out, _ = self.run_console(0, "check", path)
        self.assertEqual(out.splitlines()[0], "TV   [31mRed")
        lists = self.run_json(0, "check", path)["lists"]
        self.assertEqual([(each["column"], each["list"], each["name"]) for each in lists], [("TV", "A", " ")])


class Devices(ConsoleTest):
    def test_every_interface_in_order_and_which_would_be_taken(self):
        keys = ["name", "vendorId", "productId", "recognised", "access", "taken"]
        wanted = [
            ["simulated/1", 4660, 7, False, "unknown", False],
            ["simulated/2", 1240, 1, True, "forbidden", False],
            ["simulated/3", 11025, 2, True, "ok", True],
            ["simulated/4", 1240, 3, True, "ok", False],
        ]
        simulate = self.simulate(
            interfaces=[{"vendorId": each[1], "productId": each[2], "opens": each[2] != 1} for each in wanted]
        )
        answer = self.run_json(0, "devices", simulate)
        self.assertEqual(list(answer), ["operation", "diagnostic", "interfaces"])
        self.assertEqual(list(answer["interfaces"][0]), keys)
        self.assertEqual([list(each.values()) for each in answer["interfaces"]], wanted)
        out, err = self.run_console(0, "devices", simulate, "--quiet", "--language", "ita")
        self.assertEqual(len(out.splitlines()), 9)
        self.assertIn("\n* simulated/3\n  2b11:0002  trasmettitore, accessibile\n", out)
        self.assertTrue("simulated/2" in err and "vieta" in err, err)


class Files(ConsoleTest):
    def test_what_cannot_be_begun_ends_with_the_keys_of_the_command(self):
        bad = "--simulate=" + self.file("bad.json", json.dumps({"remote": {"version": 300}}))
        for command in (["program", EXAMPLE], ["read"], ["check", EXAMPLE], ["devices"]):
            answer = self.run_json(65, *command, bad)
            self.assertEqual(list(answer), list(self.run_json(0, *command, self.simulate())))
            self.assertIn("remote.version", answer["diagnostic"])
            self.assertIn("remote.version", self.run_console(65, *command, bad, "--quiet")[1])
        self.run_console(66, "read", "--simulate=none.json")
        answer = self.run_json(73, "read", self.simulate(), "--trace", str(self.folder / "none" / "trace"))
        self.assertEqual((list(answer), answer["result"], answer["cycles"]), (PANEL_KEYS, None, 0))

    @unittest.skipUnless(os.path.exists(FULL) and os.path.isdir("/proc/self"), "nothing that can't be written")
    def test_a_trace_or_image_that_cannot_be_written_gives_73_besides_the_result(self):
        simulate = self.simulate(image="/proc/image.json")
        for wanted, *options in (("/proc/image.json", simulate), (FULL, "--simulate", "--trace", FULL)):
            answer = self.run_json(73, "program", EXAMPLE, *options)
            self.assertEqual(answer["result"], 0)
            self.assertIn(wanted, answer["diagnostic"])

    @unittest.skipIf(len(COMMAND) > 1 or not os.path.exists(FULL), "the program has no full output")
    def test_results_that_cannot_be_written_give_73(self):
        with open(FULL, "wb") as full:
            for arguments in (["check", EXAMPLE], ["devices", "--json"], ["--help"]):
                _, err = self.run_console(73, *arguments, stdout=full)
                self.assertIn("can't be written", err)

    def test_a_trace_never_overwrites_what_is_read(self):
        path = self.file("VENTO-x.qlb", programme())
        simulate = self.simulate(image="image.json")
        self.run_console(0, "program", path, simulate)
        for victim in map(pathlib.Path, (path, self.folder / "scenario.json", self.folder / "image.json")):
            before = victim.read_bytes()
            self.run_console(64, "program", path, simulate, "--trace", str(victim))
            self.assertEqual(victim.read_bytes(), before)


if __name__ == "__main__":
    unittest.main()
