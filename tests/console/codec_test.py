"""The codec's commands: files there and back, keys, errors, and what stays as it was."""

import json
import os
import stat
import unittest

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

    def test_an_error_of_the_codec_is_told_and_leaves_the_destination_alone(self):
        for content, kind, number, place, description, events in (
            (WRONG_SUM, "raised", 2147745792, "clsHuffman.Decode()", CORRUPT, [89]),
            (NO_BRANCH, "range", None, None, "The data do not fit their code, at bit 4 of offset 16", []),
        ):
            path, dest = self.file("broken", content), self.file("dest", b"precious")
            answer = self.run_json(65, "decode", path, dest)
            self.assertEqual(list(answer["error"].values()), [kind, number, place, description])
            self.assertEqual((answer["result"], answer["events"], answer["bytesOut"]), (None, events, None))
            self.holds("dest", b"precious")
            self.assertEqual(self.run_console(65, "decode", path, path), ("", f"ventoctl: {answer['diagnostic']}\n"))
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
        answer = self.run_json(0, "decode", "keyed", source, "--key", other)
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


if __name__ == "__main__":
    unittest.main()
