"""What the console program answers: statuses, the JSON object of every command, words on both outputs, the trace."""

import hashlib
import itertools
import json
import os
import pathlib
import subprocess
import unittest

from ventoctl import COMMAND, EXAMPLES, WAITING, ConsoleTest, code_list, programme

PANEL_KEYS = [
    "operation", "diagnostic", "result", "message", "text1", "messageBox", "language", "label2",
    "programButton", "progressBar", "columns", "cycles", "seconds",
]  # fmt: skip
PROGRAM_KEYS, READ_KEYS = PANEL_KEYS + ["version", "complete"], PANEL_KEYS + ["version", "free", "sections"]
EXAMPLE = str(EXAMPLES / "VENTO-esempio.qlb")
EXAMPLE_BYTES = (EXAMPLES / "VENTO-esempio.qlb").read_bytes()
FULL = "/dev/full"
DONE = "Programmazione eseguita con successo"


class Usage(ConsoleTest):
    def test_wrong_usage_is_told_with_the_nearest_right_word_in_the_language_asked_for(self):
        for arguments, wanted in (
            ([], "the command is missing"), (["program"], "FILE is missing"), (["read", "a"], "'a' is one argument too"),
            (["verfi", "read"], "unknown command 'verfi'"), (["chekc", "--jon"], "did you mean 'check'?"),
            (["--jsno", "read"], "unknown option '--jsno'; did you mean '--json'?"), (["read", "-x"], "'-x'"),
            (["read", "--language", "deu"], "--language can't be 'deu'"), (["help", "raed"], "did you mean 'read'?"),
            (["read", "--consume"], "read has no option '--consume'"), (["read", "--trace"], "--trace needs a value"),
            (["read", "--simulate="], "--simulate needs a value"), (["read", "--json=1"], "--json takes no value"),
            (["plan", "a", "--sections", "1"], "wants --remote-version"), (["plan", "a", "--sections=1,x"], "can't be '1,x'"),
            (["plan", "a", "--remote-version", "4.0.0"], "--remote-version can't be '4.0.0'"),
            (["read", "--trace", "a", "--trace=b"], "--trace is given twice"),
        ):  # fmt: skip
            out, err = self.run_console(64, *arguments)
            self.assertTrue(out == "" and err.startswith("ventoctl: ") and wanted in err, (arguments, out, err))
        for name in ("it", "ITA", "Ita"):
            self.assertIn("comando 'x' sconosciuto", self.run_console(64, "x", "--language", name)[1])

    def test_help_tells_every_command_and_option_and_the_text_of_each_status(self):
        general, err = self.run_console(0, "--help")
        self.assertEqual((general, err), self.run_console(0, "help"))
        self.assertTrue("--simulate[=SCENARIO]" in general and "18   Error 19: " in general and err == "", general)
        for command in (
            "program", "verify", "plan", "read", "check", "devices", "explain", "convert", "diff", "encode", "decode", "info",
            "completion", "help", "version",
        ):  # fmt: skip
            self.assertIn(f"\n  {command} ", general)
            own = self.run_console(0, "help", command)[0]
            self.assertEqual(own, self.run_console(0, command, "-h", "--language=en")[0])
            self.assertTrue(own.startswith(f"Usage: ventoctl {command}"), own)
            self.assertNotIn("ommand", self.run_console(0, command, "-h", "--language=it")[0])
        version = self.run_json(0, "--version")
        self.assertEqual(self.run_console(0, "-V")[0], f"ventoctl {version['version']}\n")
        self.assertRegex(version["commit"] or "0", "^[0-9a-f]+(-dirty)?$")
        self.assertTrue(version["compiler"] and version["libraries"]["libgcrypt"][0] == "1", version)


class Program(ConsoleTest):
    def test_a_programme_goes_in_and_is_read_back_by_name(self):
        simulate = self.simulate(image="remote-image.json")
        arguments = [simulate, "--language", "ita", "program", EXAMPLE]
        answer = self.run_json(0, *arguments)
        self.assertEqual(list(answer), PROGRAM_KEYS)
        self.assertGreater(answer.pop("cycles"), 100)
        self.assertGreater(answer.pop("seconds"), 0)
        columns = answer.pop("columns")
        self.assertEqual([column["label"] for column in columns], ["Città 100", "Beta 200", "Gamma 300"])
        self.assertTrue(columns[2]["listB"].startswith("199,193,205,205,193,160,179,194,"))
        bar = {"minimum": 0, "maximum": 1009, "value": answer["progressBar"]["value"], "visible": False}
        button = {"visible": True, "enabled": True}
        build = {"major": 3, "minor": 0, "build": 4}
        self.assertEqual(
            list(answer.values()), ["program", None, 0, DONE, "0", None, "ITA", EXAMPLE, button, bar, build, True]
        )
        text = DONE + "\n" + EXAMPLE + ", telecomando di versione 3.0.4\n" + "".join(
            f"{name} (lista B, {size} byte dalla parola {offset}): scritta e verificata\n"
            for name, size, offset in (("TV", 328, 256), ("DTT", 264, 4352), ("SAT", 417, 8448))
        )
        self.assertEqual(self.run_console(0, *arguments), (text, WAITING + "\n"))
        self.assertEqual(self.run_console(0, *arguments, "--quiet", "--strict"), (text, ""))
        self.assertRegex(self.run_console(0, *arguments, "-qv")[1], r"^Codice 0, \d+ cicli sul collegamento, \d+ ms\n$")

        answer = self.run_json(0, "read", simulate)
        self.assertEqual(list(answer), READ_KEYS)
        section = {"column": "DTT", "offset": 4352, "free": False, "name": "BETA  2B"}
        self.assertEqual([answer[key] for key in ("version", "free")] + answer["sections"][1:2], [build, 0, section])
        self.assertEqual(answer["message"], "TV CITTA 1B\r\nDTT BETA  2B\r\nSAT GAMMA 3B\r\n")
        self.assertEqual(answer["columns"], [{"label": None, "listA": None, "listB": None}] * 3)
        self.assertEqual(self.run_console(0, "read", simulate)[0], "TV CITTA 1B\nDTT BETA  2B\nSAT GAMMA 3B\n")

    def test_a_failure_is_told_with_its_status_and_without_a_result_on_standard_output(self):
        unusable = self.file("VENTO-bad.qlb", "1;A;1,2,x;;\n1;A;1,2;;\n")
        unloadable = self.file("VENTO-x.qlb", "1;A;1;;\n\n")
        refused = {"interfaces": [{"vendorId": 1240, "productId": 1, "opens": False}]}
        for status, result, path, scenario, *words in (
            (2, 2, EXAMPLE, {"faults": [{"cycle": 2, "kind": "unplugged"}]}, "USB not connected"),
            (3, 3, EXAMPLE, {"remote": None}, "Remote not detected, place the remote in front of the transmitter"),
            (15, 15, unusable, {}, "Attention an error occurred! Repeat programming", "value 3"),
            (2, None, EXAMPLE, {"interfaces": []}, "Transmitter not connected"),
            (2, None, EXAMPLE, refused, "Transmitter not connected", "does not let"),
            (65, None, unloadable, {}, "Line 2, field 2: missing"),
            (66, None, "none.qlb", {}, "none.qlb"),
        ):
            arguments = ["program", path, self.simulate(**scenario), "--language", "eng"]
            answer = self.run_json(status, *arguments)
            self.assertEqual((list(answer), answer["result"]), (PROGRAM_KEYS, result))
            self.assertEqual([each["outcome"] is None for each in answer["columns"]], [result is None] * 3)
            out, err = self.run_console(status, *arguments, "--quiet")
            self.assertTrue(out == "" and err.startswith("ventoctl: "), (out, err))
            for told in (*words, answer["messageBox"], result and answer["message"]):
                self.assertIn(told or "", err)

    def test_each_column_is_told_with_what_became_of_it(self):
        path = self.file("VENTO-x.qlb", "1;A;1,2;;\n1;A;3,4,5;;\n3; ;6;;\n3;;7;;\n2;B;8;;\n2;B;9;;\n")
        two = {"remote": {"sections": [0, 2, 9], "version": 67}}
        refused = {"faults": [{"kind": "status", "value": 1, "cycle": 19}]}
        not_verified = {"faults": [{"kind": "flip", "byte": 1, "mask": 1, "cycle": 23}]}
        for scenario, status, complete, tv, dtt, words in (
            ({}, 0, True, (True, True, None), (True, True), "SAT: not selected"),
            (two, 1, False, (True, True, "DTT"), (True, True), "TV (list B, 3 bytes from word 0): overwritten by"),
            ({"remote": {"sections": [5]}}, 1, False, (True, True, None), (False, False), "DTT: not written: this remote"),
            (refused, 1, False, (False, False, None), (True, True), "TV (list B, 3 bytes from word 256): not written"),
            (not_verified, 18, False, (True, False, None), (False, False), "word 256): written, but not verified"),
        ):
            arguments = ["program", path, self.simulate(**scenario)]
            answer = self.run_json(status, *arguments, "--strict")
            self.assertEqual((answer["result"], answer["complete"]), (0 if status == 1 else status, complete))
            first, second, third = (column["outcome"] for column in answer["columns"])
            self.assertEqual((first["written"], first["verified"], first["overwrittenBy"]), tv)
            self.assertEqual((second["written"], second["verified"]), dtt)
            self.assertEqual((first["selected"], third["selected"], third["lost"]), (True, False, False))
            self.assertEqual((first["list"], first["bytes"], first["lost"]), ("B", 3, tv != (True, True, None)))
            self.assertIn(words, self.run_console(0 if status == 1 else status, *arguments)[0])

    def test_a_programme_is_proved_without_writing(self):
        whole = programme(40)
        path, image = self.file("VENTO-x.qlb", whole), self.folder / "image.json"
        simulate = self.simulate(image=str(image))
        answer = self.run_json(18, "verify", path, simulate, "--language=it")
        self.assertEqual(answer["message"], "Il telecomando non contiene questo programma")
        self.assertTrue(answer["columns"][1]["outcome"]["lost"])
        self.run_console(0, "program", path, simulate)
        written = image.read_text()
        out, _ = self.run_console(0, "verify", path, simulate, "--language=it")
        self.assertIn("DTT (lista B, 40 byte dalla parola 4352): è nel telecomando\n", out)
        other = self.file("VENTO-y.qlb", whole.replace("2;BETA;194,197,212,193,160,194,", "2;BETA;194,197,212,193,160,195,"))
        name = self.file("VENTO-z.qlb", whole.replace("1;ALFA;193,204,", "1;ALFA;204,193,"))
        free = json.dumps({**json.loads(written), "free": 64})
        for file, content, proved, words in (
            (other, written, [True, False, True], "DTT: Verification failed: checksum"),
            (name, written, [False, True, True], 'the section begins with "ALFA B  " and not with "LAFA B  "'),
            (path, free, [True, True, False], "SAT: the remote marks this section as free."),
        ):
            image.write_text(content)
            arguments = ["verify", file, simulate]
            answer = self.run_json(18, *arguments)
            self.assertEqual((answer["result"], answer["complete"]), (18, False))
            self.assertEqual([each["outcome"]["verified"] for each in answer["columns"]], proved)
            self.assertIn(words, self.run_console(18, *arguments)[1])
            self.assertEqual(image.read_text(), content)

        cycles = self.run_json(0, "program", path, self.simulate())["cycles"]
        self.assertTrue(self.run_json(0, "program", path, self.simulate(), "--verify")["complete"])
        disturbed = self.simulate(faults=[{"kind": "flip", "byte": 1, "mask": 4, "cycle": cycles + 20}])
        answer = self.run_json(18, "program", path, disturbed, "--verify")
        self.assertEqual([answer["columns"][0][key]["verified"] for key in ("outcome", "verification")], [True, False])
        self.assertEqual((answer["result"], answer["complete"]), (18, False))

    def test_a_plan_says_what_would_be_written_and_counts_what_a_run_sends(self):
        path = self.file("VENTO-x.qlb", "1;A;1,2;;\n1;A;" + code_list("A", 33) + ";;\n3; ;6;;\n3;;7;;\n2;B;8;;\n2;B;9;;\n")
        trace = self.folder / "trace.jsonl"
        for remote, given, status, wanted in (
            ({}, ["3.0.4"], 0, [("B", 33, 2, 10, 256, 4096, None), ("B", 1, 1, 7, 4352, 4096, None)]),
            ({"version": 66, "sections": [0, 2]}, ["1.0.2", "0,2"], 0,
             [("A", 2, 1, 7, 0, 2, None), ("A", 1, 1, 7, 2, 65534, None)]),
            ({"sections": [6, 2, 5]}, ["3.0.4", "6,2,5"], 0,
             [("B", 33, 2, 10, 6, 65530, None), ("B", 1, 1, 7, 2, 3, None), (None, 0, 0, 0, 5, 1, None)]),
            ({"sections": [0, 32]}, ["3.0.4", "0,32"], 0, [("B", 33, 2, 10, 0, 32, "DTT"), ("B", 1, 1, 7, 32, 65504, None)]),
            ({"sections": [65504]}, ["3.0.4", "65504"], 15, []),
        ):  # fmt: skip
            simulate = self.simulate(remote=remote)
            asked = self.run_json(status, "plan", path, simulate)
            options = [x for pair in zip(("--remote-version", "--sections"), given) for x in pair]
            told = self.run_json(status, "plan", path, *options)
            self.assertEqual((told["cycles"], asked["cycles"]), (0, 19))
            for key in ("result", "version", "bytes", "frames", "columns"):
                self.assertEqual(told[key], asked[key])
            keys = ("list", "bytes", "blocks", "frames", "offset", "room", "overwrittenBy")
            plans = [tuple(column["plan"][key] for key in keys) for column in told["columns"]]
            self.assertEqual(plans[: len(wanted)], wanted)
            done = self.run_json(status, "program", path, simulate, "--trace", str(trace))
            if not status:
                outcomes = [column["outcome"]["overwrittenBy"] for column in done["columns"]]
                self.assertEqual([each[-1] for each in plans], outcomes)
                self.assertEqual(done["cycles"] - 16, told["frames"])
        for language, *told in (
            ("it", "TV: lista B, 33 byte in 2 blocchi e 10 frame, dalla parola 0, che ha posto per 32; la lista di DTT", "in 1 blocco"),
            ("en", "TV: list B, 33 bytes in 2 blocks and", "DTT: list B, 1 byte in 1 block and 7 frames, from word 32"),
        ):  # fmt: skip
            given = ("--remote-version", "3.0.4", "--sections", "0,32", "--language", language)
            out, _ = self.run_console(0, "plan", path, *given)
            self.assertTrue(all(each in out for each in told), out)

    def test_a_remote_that_cannot_be_read_is_not_called_done(self):
        for scenario, words in (
            ({"remote": {"version": 64}}, "of version 1.0.0, can't be read back"),
            ({"faults": [{"kind": "status", "value": 1, "cycle": 17}]}, "did not acknowledge the end"),
        ):
            out, _ = self.run_console(0, "read", self.simulate(**scenario))
            self.assertIn(words, out)
            self.assertNotIn("ompleted", out)

    def test_only_consume_deletes_the_file_and_does_so_whatever_comes(self):
        nothing = {"interfaces": []}
        for status, content, scenario, mode in (
            (0, programme(), {}, 0o644), (2, programme(), nothing, 0o644), (65, "1;2\n", {}, 0o644), (0, programme(), {}, 0o444),
        ):  # fmt: skip
            arguments = ["program", self.file("VENTO-x.qlb", content), self.simulate(**scenario)]
            os.chmod(arguments[1], mode)
            self.assertNotIn("deleted", self.run_console(status, *arguments)[1])
            self.assertTrue(os.path.exists(arguments[1]))
            stays = mode == 0o444
            answer = self.run_json(status, *arguments, "--consume")
            self.assertEqual((answer["consumed"], os.path.exists(arguments[1])), (not stays, stays))
            self.assertEqual("VENTO-x.qlb was not deleted." in (answer["diagnostic"] or ""), stays)


class Check(ConsoleTest):
    def test_the_lists_of_a_programme_with_length_name_and_line(self):
        out, err = self.run_console(0, "check", EXAMPLE, "--language", "ita")
        self.assertEqual(err, "")
        self.assertEqual(out.splitlines()[:2], ["TV   Città 100", "     A    312 byte  CITTA 1A  riga 1"])
        answer = self.run_json(0, "check", EXAMPLE)
        self.assertEqual(list(answer), ["operation", "diagnostic", "loads", "columns", "lists", "problem", "warnings"])
        self.assertEqual((answer["loads"], answer["problem"], answer["diagnostic"]), (True, None, None))
        beta = {"column": "DTT", "list": "B", "bytes": 264, "name": "BETA  2B", "valid": True}
        self.assertEqual((answer["lists"][3], len(answer["lists"])), (beta, 6))
        steers = self.file("VENTO-x.qlb", b"1;\x1b[31mRed\x81\x07;65;;\n")
        self.assertEqual(self.run_console(0, "check", steers)[0].splitlines()[0], "TV   [31mRed")

    def test_the_first_problem_with_its_place(self):
        reason = 'List B of column TV, value 3: "256" is not a number from 0 to 255. Correct the file and open it again.'
        for content, loads, *problem in (
            ("1;A;1;;\n1;A;1,2,256;;\n", True, 2, 2, reason),
            ("\n" * 32768, False, None, None, "The file has more than 32767 lines."),
        ):
            path = self.file("VENTO-x.qlb", content)
            answer = self.run_json(65, "check", path)
            self.assertEqual([answer["loads"], *map(answer["problem"].get, ("line", "field", "reason"))], [loads, *problem])
            self.assertIn(problem[-1], self.run_console(65, "check", path, "--quiet")[0])

    def test_what_loads_but_hardly_as_it_was_meant_is_warned_of(self):
        whole = "1;A;1;;\n1;A;2;;\n"
        for content, *wanted in (
            (whole, []), (EXAMPLE_BYTES, []),
            ("1;A;1;;\n1;A;2;;", [2, "is not read. List B of column TV is lost"], [1, "has no list B"]),
            (whole + "2;B;1;;", [3, "Column DTT is lost"]), (whole + "1;A;3;;\n", [3, "has no effect: column TV"]),
            ("1;A;1;;\n2;B;1;;\n2;B;2;;\n", [2, "is of column DTT but taken as list B of column TV"]),
            ("1; ;1;;\n1;;2;;\n", [1, "label is blank"]), ("1;A;;;\n1;A;2;;\n", [1, "column TV has no list A"]),
            (f"1;A;1;;\n1;A;{code_list('A', 4097)};;\n", [2, "has 4097 bytes, more than the 4096"]),
            (f"1;A;1;;\n1;A;{code_list('A', 32768)};;\n", [None, "the lists B have 32768 bytes"]),
            ("1;Città;1;;\n1;A;2;;\n".encode(), [None, "looks like UTF-8"]),
            ("1;A\rB;1;;\r\n1;A;2;;\r\n", [1, "a carriage return alone"]),
        ):
            path = self.file("VENTO-x.qlb", content)
            wanted = [each for each in wanted if each]
            warnings = self.run_json(0, "check", path)["warnings"]
            for line, words in wanted:
                self.assertTrue(any(each["line"] == line and words in each["reason"] for each in warnings), (words, warnings))
                self.assertIn(words, self.run_console(1, "check", path, "--strict")[0])
            self.assertEqual(bool(warnings), bool(wanted), warnings)
        for content in (b"\xef\xbb\xbf1;A;1;;\n", "1;A;1;;\n".encode("utf-16")):
            self.assertIn("Unicode", self.run_console(65, "check", self.file("VENTO-x.qlb", content))[0])
        tab = self.file("VENTO-x.qlb", "1;A;1,\t2;;\n1;A;2;;\n")
        self.assertIn("TAB", self.run_console(65, "check", tab, "--strict")[0])

    def test_several_files_and_standard_input_end_with_the_worst_status(self):
        good, bad = self.file("VENTO-a.qlb", programme(8)), self.file("VENTO-b.qlb", "1;A;1;;\n\n")
        for status, *paths in ((0, good, good), (65, good, bad, good), (66, bad, "none", good)):
            answer = self.run_json(status, "check", *paths)
            self.assertEqual([each["file"] for each in answer["files"]], paths)
            self.assertEqual(max(each["status"] for each in answer["files"]), status)
        self.assertIn(f"{bad}: Line 2, field 2: missing", self.run_console(65, "check", good, bad)[0])
        done = subprocess.run([*COMMAND, "check", "-", "--json"], input=b"1;A;1;;\n1;A;2;;", capture_output=True, timeout=60)
        self.assertEqual((done.returncode, json.loads(done.stdout)["warnings"][-1]["line"]), (0, 2))


class Convert(ConsoleTest):
    def test_a_programme_goes_there_and_back(self):
        example = self.run_json(0, "convert", EXAMPLE, "x.json")["programme"]["columns"][0]
        self.assertEqual((example["column"], example["label"], example["listA"][:3]), ("TV", "Città 100", [195, 201, 212]))
        self.run_console(0, "convert", "x.json", "back.qlb")
        self.assertTrue(self.run_json(0, "diff", EXAMPLE, "back.qlb")["same"])

    def test_json_that_is_no_programme_is_refused_with_its_place(self):
        column = {"column": "TV", "label": "A", "listA": [1], "listB": []}
        for columns, words in (
            ([{**column, "label": "a;b"}], "columns[0].label: expected a text without semicolon"), ([{**column, "label": "č"}], "Windows-1252"),
            ([{**column, "listA": [1, 256]}], "columns[0].listA[1]: expected a whole number from 0 to 255"), ([column, column], "columns[1].column"),
            ([{**column, "column": "FM"}], "columns[0].column"), ([column] * 4, "3 columns at the most"), ([{}], "columns[0].column"),
        ):  # fmt: skip
            path = self.file("x.json", json.dumps({"columns": columns}).encode())
            self.assertIn(words, self.run_console(65, "convert", path, "--language", "en")[1])
        self.run_console(66, "convert", "none")

    def test_a_difference_is_told_by_column_and_list(self):
        a = self.file("a.qlb", "1;A;1,2,3;;\n1;A;1,2;;\n2;B;5;;\n2;B;6;;\n")
        b = self.file("b.qlb", "1;A à;1,2,4,5;;\n1;A; 1 ,2;;\n3;C;5;;\n3;C;6;;\n")
        out = self.run_console(1, "diff", a, b)[0]
        self.assertEqual(out.splitlines(), [
            'TV, label "A" and "A à"', "TV, list A: 3 bytes and 4, 1 differs, the first at place 3: 3 and 4",
            "DTT, missing in B", "SAT, missing in A",
        ])  # fmt: skip
        answer = self.run_json(1, "diff", a, b)["differences"]
        self.assertEqual([each["what"] for each in answer], ["label", "listA", None, None])
        self.assertEqual([answer[1][key] for key in ("bytesA", "bytesB", "different", "firstDifferent")], [3, 4, 1, 3])
        self.assertEqual(self.run_console(0, "diff", a, a), ("", ""))


class Devices(ConsoleTest):
    def test_every_interface_in_order_and_which_would_be_taken(self):
        wanted = [
            ["simulated/1", 4660, 7, False, "unknown", False],
            ["simulated/2", 1240, 1, True, "forbidden", False],
            ["simulated/3", 11025, 2, True, "ok", True],
            ["simulated/4", 1240, 3, True, "ok", False],
        ]
        interfaces = [{"vendorId": each[1], "productId": each[2], "opens": each[2] != 1} for each in wanted]
        simulate = self.simulate(interfaces=interfaces)
        answer = self.run_json(0, "devices", simulate)
        self.assertEqual(list(answer), ["operation", "diagnostic", "interfaces"])
        keys = ["name", "vendorId", "productId", "recognised", "access", "taken", "error", "inputBytes", "outputBytes"]
        self.assertEqual(answer["interfaces"], [dict(zip(keys, each + 3 * [None])) for each in wanted])
        out, err = self.run_console(0, "devices", simulate, "--quiet", "--language", "ita")
        self.assertIn("\n* simulated/3\n  2b11:0002  trasmettitore, accessibile\n", out)
        self.assertTrue("simulated/2" in err and "vieta" in err, err)


class Files(ConsoleTest):
    def test_what_cannot_be_begun_ends_with_the_keys_of_the_command(self):
        bad = "--simulate=" + self.file("bad.json", json.dumps({"remote": {"version": 300}}))
        for command in (["program", EXAMPLE], ["read"], ["check", EXAMPLE], ["devices"]):
            answer = self.run_json(65, *command, bad)
            self.assertEqual(list(answer), list(self.run_json(0, *command, self.simulate())))
            self.assertIn("remote.version", answer["diagnostic"])
        self.run_console(66, "read", "--simulate=none.json")
        self.run_console(73, "read", self.simulate(), "--trace", str(self.folder / "none" / "trace"))

    @unittest.skipIf(len(COMMAND) > 1 or not os.path.exists(FULL), "nothing that can't be written")
    def test_what_cannot_be_written_gives_73_besides_the_result(self):
        image = "/proc/image.json"
        for wanted, *options in ((image, self.simulate(image=image)), (FULL, "--simulate", "--trace", FULL)):
            answer = self.run_json(73, "program", EXAMPLE, *options)
            self.assertEqual(answer["result"], 0)
            self.assertIn(wanted, answer["diagnostic"])
        with open(FULL, "wb") as full:
            for arguments in (["check", EXAMPLE], ["devices", "--json"], ["--help"]):
                self.assertIn("can't be written", self.run_console(73, *arguments, stdout=full)[1])

    def test_neither_a_trace_nor_a_log_overwrites_what_is_read(self):
        path = self.file("VENTO-x.qlb", programme())
        simulate = self.simulate(image="image.json")
        self.run_console(0, "program", path, simulate)
        for option, victim in itertools.product(("--trace", "--log"), (path, "scenario.json", "image.json")):
            before = (self.folder / victim).read_bytes()
            self.run_console(64, "program", path, simulate, option, victim)
            self.assertEqual((self.folder / victim).read_bytes(), before)
        self.run_console(64, "program", path, "--simulate", "--trace", "new.json", "--log", "./new.json")
        self.run_console(64, "program", path, self.simulate(image="new.json"), "--trace", "./new.json")


class Series(ConsoleTest):
    SERIES = {"leavesAfterPolls": 15, "awayForPolls": 230}

    def read_log(self, path):
        return [json.loads(line) for line in pathlib.Path(path).read_text().splitlines()]

    def test_five_remotes_with_a_fault_in_the_third(self):
        path, log = self.file("VENTO-x.qlb", programme(40)), str(self.folder / "log.jsonl")
        whole = self.run_json(0, "program", path, self.simulate(remote=self.SERIES), "--series=2")
        first = self.run_json(0, "program", path, self.simulate(remote=self.SERIES), "--series=1")["cycles"]
        fault = {"kind": "flip", "byte": 1, "mask": 1, "cycle": first + 2 * (whole["cycles"] - first) - 6}
        arguments = ["program", path, self.simulate(remote=self.SERIES, faults=[fault]), "--series=5", "--log", log]
        out, err = self.run_console(1, *arguments, "--language=en")
        heads = [line for line in out.splitlines() if line.startswith("Remote ")]
        self.assertEqual(heads, [f"Remote {n}: {'bad' if n == 3 else 'good'}" for n in range(1, 6)])
        self.assertTrue(out.endswith("End of the series: 4 good, 1 bad\n"), out)
        self.assertEqual(err.count("Take the remote away"), 4)
        lines = self.read_log(log)
        self.assertEqual([line["complete"] for line in lines], [True, True, False, True, True])
        digest = hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()
        transmitter = {"path": "simulated/1", "vendorId": 1240, "productId": 1}
        for line in lines:
            self.assertEqual((line["file"], line["sha256"], line["transmitter"]), (path, digest, transmitter))
            self.assertRegex(line["time"], r"^20\d\d-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
            self.assertEqual(line["version"], {"major": 3, "minor": 0, "build": 4})
            self.assertEqual([column["column"] for column in line["columns"]], ["TV", "DTT", "SAT"])
        answer = self.run_json(1, *arguments)["series"]
        self.assertEqual((answer["good"], answer["bad"], len(answer["runs"])), (4, 1, 5))

    def test_a_remote_that_stays_is_not_written_again_though_it_falters(self):
        # The polls of the wait behind the first run fail for a while, fewer than make an absence.
        path, trace = self.file("VENTO-x.qlb", programme(1)), self.folder / "trace.jsonl"
        first = self.run_json(0, "program", path, self.simulate(), "--series=1")["cycles"]
        stays = {"leavesAfterPolls": 400, "awayForPolls": 230}
        for fault, through in (({"kind": "status", "value": 1}, 210), ({"kind": "readFails"}, 210), ({"kind": "unplugged"}, 30)):
            faults = [{**fault, "cycle": first + 20, "through": first + through}]
            simulate = self.simulate(faults=faults, remote=stays)
            answer = self.run_json(0, "program", path, simulate, "--series=2", "--trace", str(trace))
            self.assertEqual(answer["series"]["good"], 2)
            steps = map(json.loads, trace.read_text().splitlines())
            versions = [each["cycle"] for each in steps if (each.get("report") or "").startswith("00075501000106")]
            self.assertEqual((len(versions), versions[-1] > first + 600), (2, True), versions)

    def test_processes_share_a_log(self):
        path, log = self.file("VENTO-x.qlb", programme(200)), self.folder / "log.jsonl"
        command = [*COMMAND, "program", path, self.simulate(), "--log", str(log), "-q"]
        runs = [subprocess.Popen(command, stdout=subprocess.DEVNULL) for _ in range(12)]
        self.assertEqual([run.wait() for run in runs], [0] * 12)
        self.assertEqual([line["status"] for line in self.read_log(log)], [0] * 12)
        self.run_console(2, "verify", path, self.simulate(interfaces=[]), "--log", str(log))
        last = self.read_log(log)[-1]
        self.assertEqual((last["operation"], last["result"], last["transmitter"]), ("verify", None, None))
        nowhere = str(self.folder / "none" / "log")
        answer = self.run_json(73, "program", path, self.simulate(), "--log", nowhere)
        self.assertEqual((answer["cycles"], answer["result"]), (0, None))

    def test_the_transmitter_is_the_one_that_is_chosen(self):
        interfaces = [{"vendorId": 1240, "productId": 1}, {"vendorId": 7}, {"vendorId": 11025, "productId": 2}]
        path, log = self.file("VENTO-x.qlb", programme(2)), str(self.folder / "log.jsonl")
        simulate = self.simulate(interfaces=interfaces)
        for chosen, vendor in ((["--transmitter", "simulated/3"], 11025), ([], 1240), (["--transmitter=simulated/1"], 1240)):
            self.run_console(0, "program", path, simulate, "--log", log, *chosen)
            self.assertEqual(self.read_log(log)[-1]["transmitter"]["vendorId"], vendor)
        for missing in ("simulated/2", "simulated/4", "/dev/null"):
            _, err = self.run_console(2, "read", simulate, "--transmitter", missing)
            self.assertEqual("no interface called" in err, missing != "simulated/2")
