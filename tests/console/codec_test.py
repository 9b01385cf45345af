"""The codec's commands: files there and back, keys, errors, and what stays as it was."""

import json
import os
import pathlib
import stat
import subprocess

from ventoctl import COMMAND, ConsoleTest

KEYS = ["operation", "diagnostic", "result", "error", "events", "bytesIn", "bytesOut", "key"]
CONTAINER = bytes.fromhex("4D41330D660B0000000500610162036303640372 03BA071A730D")
WRONG_SUM = CONTAINER[:4] + b"\x00" + CONTAINER[5:]
NO_BRANCH = bytes.fromhex("4D41330D 00 05000000 0200 6101 6202 02 3A")
CORRUPT = "The data might be corrupted (checksum did not match expected value)"


class Codec(ConsoleTest):
    def tearDown(self):
        self.assertEqual(list(self.folder.glob("*.new")), [])

    def holds(self, name, content):
        self.assertEqual((self.folder / name).read_bytes(), content)

    def test_a_file_goes_there_and_back_in_place_and_keeps_its_permissions(self):
        path = self.file("source", b"abracadabra")
        os.chmod(path, 0o640)
        answer = self.run_json(0, "encode", path, path)
        self.assertEqual(list(answer), KEYS)
        self.assertEqual(list(answer.values()), ["encode", None, None, None, [7, 12, 100], 11, 26, None])
        self.holds("source", CONTAINER)
        checked = (self.run_json(0, "decode", path), self.run_console(0, "decode", path, "--language", "eng")[0])
        self.holds("source", CONTAINER)
        answer = self.run_json(0, "decode", path, path)
        self.assertEqual(checked, (answer, "26 bytes decoded to 11\n"))
        self.assertEqual(list(answer.values()), ["decode", None, False, None, [89, 100], 26, 11, None])
        self.holds("source", b"abracadabra")
        if len(COMMAND) == 1:  # without an emulator, whose permissions are its own
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o640)

    def test_standard_streams_long_names_and_files_without_a_size_serve_too(self):
        def piped(data, *arguments):
            return subprocess.run([*COMMAND, *arguments], input=data, capture_output=True, cwd=self.folder, timeout=60)

        done = piped(b"abracadabra", "encode", "-", "-", "--language", "en")
        self.assertEqual((done.stdout, b"11 bytes encoded in 26" in done.stderr), (CONTAINER, True))
        self.assertEqual(piped(CONTAINER, "decode", "-", "-", "-q").stdout, b"abracadabra")
        self.assertEqual(piped(WRONG_SUM, "decode", "-", "-").returncode, 65)
        self.assertEqual(piped(b"", "encode", "-", "-", "--json").returncode, 64)
        name = "n" * 245
        self.run_console(0, "encode", self.file("source", b"abracadabra"), name)
        self.run_console(0, "decode", name, name)
        self.holds(name, b"abracadabra")
        if os.path.exists("/proc/version") and len(COMMAND) == 1:
            self.assertGreater(self.run_json(0, "encode", "/proc/version", "v")["bytesIn"], 10)
            self.run_console(0, "decode", "v", "v")
            self.assertEqual((self.folder / "v").read_bytes(), pathlib.Path("/proc/version").read_bytes())

    def test_another_file_at_dest_is_overwritten_by_force_alone(self):
        source, dest = self.file("source", b"abracadabra"), self.file("dest", b"precious")
        for command in (["encode", source, dest], ["decode", source, dest], ["convert", self.file("VENTO-x.qlb", "1;A;1;;\n1;A;2;;\n"), dest]):
            self.assertIn("-f overwrites it", self.run_console(73, *command, "--language", "en")[1])
            self.holds("dest", b"precious")
        self.run_console(0, "encode", source, dest, "-f")
        self.holds("dest", CONTAINER)

    def test_info_tells_what_the_header_says(self):
        stored = bytes.fromhex("4D41300D") + b"abc"
        fields = ["error", "bytesIn", "key", "form", "sourceLength", "checksum", "symbols", "shortestCode", "longestCode", "dataOffset"]
        for content, wanted, words in (
            (CONTAINER, [None, 26, None, "coded", 11, 102, 5, 1, 3, 23], "table of 5 values, codes of 1 to 3 bits; the data begin at byte 24"),
            (stored, [None, 7, None, "stored", 3] + [None] * 5, "3 bytes in 7"), (b"plain text", [None, 10, None, "foreign", 10] + [None] * 5, "no container, 10 bytes"),
        ):  # fmt: skip
            answer = self.run_json(0, "info", self.file("container", content))
            self.assertEqual((list(answer)[2:], list(answer.values())[2:]), (fields, wanted))
            self.assertIn(words, self.run_console(0, "info", "container", "--language", "en")[0])
        self.run_console(65, "info", self.file("container", CONTAINER[:12]))
        self.run_console(66, "info", "none")

    def test_an_error_of_the_codec_is_told_and_leaves_the_destination_alone(self):
        for content, kind, number, place, description, italian, events in (
            (WRONG_SUM, "raised", 2147745792, "clsHuffman.Decode()", CORRUPT,
             "I dati potrebbero essere corrotti (la somma di controllo non è quella attesa)", [89]),
            (NO_BRANCH, "range", None, None, "The data do not fit their code, at bit 4 of offset 16",
             "I dati non corrispondono al loro codice, al bit 4 della posizione 16", []),
        ):
            path, dest = self.file("broken", content), self.file("dest", b"precious")
            answer = self.run_json(65, "decode", path, dest, "-f")
            self.assertEqual(list(answer["error"].values()), [kind, number, place, description])
            self.assertEqual((answer["result"], answer["events"], answer["bytesOut"]), (None, events, None))
            self.holds("dest", b"precious")
            self.assertEqual(self.run_console(65, "decode", path, path), ("", f"ventoctl: {answer['diagnostic']}\n"))
            self.assertIn(italian, " ".join(self.run_console(65, "decode", path, path, "--language", "it")[1].split()))
            self.holds("broken", content)

    def test_files_that_cannot_be_read_or_written(self):
        source, missing, folder = self.file("source", b"ab"), str(self.folder / "missing"), str(self.folder)
        for status, *arguments in (
            (66, "encode", missing, source),
            (66, "decode", folder, source),
            (66, "encode", source, source, "--key", missing),
            (73, "encode", source, str(self.folder / "no" / "such")),
            (73, "encode", source, folder),
        ):
            answer = self.run_json(status, *arguments)
            self.assertEqual((list(answer), answer["bytesOut"]), (KEYS, None))
            self.assertTrue(answer["diagnostic"])
        self.holds("source", b"ab")

    def test_a_key_comes_back_from_the_container_as_far_as_it_is_there(self):
        source = self.file("source", bytes(range(200)))
        key = [[row % 50, row % 7] for row in range(210)]
        path = self.file("key.json", json.dumps(key))
        answer = self.run_json(0, "encode", source, str(self.folder / "keyed"), "--key", path)
        self.assertEqual(answer["key"], key)
        other = self.file("other.json", json.dumps([[0, 0]] * 12 + key[12:]))
        answer = self.run_json(0, "decode", "keyed", source, "--force", "--key", other)
        self.assertEqual((answer["key"], answer["result"], answer["bytesOut"]), (key, None, 200))
        self.holds("source", bytes(range(200)))

    def test_keys_that_cannot_be_used(self):
        source = self.file("source", b"abracadabra")
        for text, kind in (
            (json.dumps([[0, 0]] * 11), "range"), (json.dumps([[0, 2**63 - 1]] * 12), "overflow"), ("", None),
            ("{}", None), ("[[1]]", None), ("[[1, 2.5]]", None), ("[[1, 9223372036854775808]]", None), ("[3]", None),
        ):  # fmt: skip
            answer = self.run_json(65, "encode", source, source, "--key", self.file("key.json", text))
            self.assertEqual(answer["error"] and answer["error"]["kind"], kind)
            self.assertEqual(answer["key"], json.loads(text) if kind else None)
        self.holds("source", b"abracadabra")
