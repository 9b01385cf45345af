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
NO_FORM = "The data either was not compressed with HE3 or is corrupt (identification string not found)"


class Codec(ConsoleTest):
    def tearDown(self):
        self.assertEqual([path.name for path in self.folder.glob("*.new")], [])

    def holds(self, name, content):
        self.assertEqual((self.folder / name).read_bytes(), content)

    def test_a_file_goes_there_and_back_in_place_and_keeps_its_permissions(self):
        path = self.file("source", b"abracadabra")
        os.chmod(path, 0o640)
        answer = self.run_json(0, "encode", path, path)
        self.assertEqual(list(answer), KEYS)
        self.assertEqual(list(answer.values()), ["encode", None, None, None, [7, 12, 100], 11, 26, None])
        self.holds("source", CONTAINER)
        answer = self.run_json(0, "decode", path, path)
        self.assertEqual(list(answer.values()), ["decode", None, False, None, [89, 100], 26, 11, None])
        self.holds("source", b"abracadabra")
        if len(COMMAND) == 1:  # without an emulator, whose permissions are its own
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o640)

    def test_without_a_destination_a_container_is_only_checked(self):
        for content, result, said in (
            (CONTAINER, False, "26 bytes decoded to 11\n"),
            (b"no container", True, "12 bytes decoded to 12, they were not compressed\n"),
        ):
            path = self.file("some", content)
            self.assertEqual(self.run_json(0, "decode", path)["result"], result)
            self.assertEqual(self.run_console(0, "decode", path, "--language", "eng"), (said, ""))
        self.assertEqual([path.name for path in self.folder.iterdir()], ["some"])

    def test_an_error_of_the_codec_is_told_and_leaves_the_destination_alone(self):
        for content, kind, number, place, description, events in (
            (b"MA1\r", "raised", 2147745792, "HuffmanDecode()", NO_FORM, []),
            (WRONG_SUM, "raised", 2147745792, "clsHuffman.Decode()",
             "The data might be corrupted (checksum did not match expected value)", [89]),
            (NO_BRANCH, "range", None, None, "The data do not fit their code, at bit 4 of offset 16", []),
        ):  # fmt: skip
            path, dest = self.file("broken", content), self.file("dest", b"precious")
            answer = self.run_json(65, "decode", path, dest)
            self.assertEqual(list(answer["error"].values()), [kind, number, place, description])
            self.assertIn(description, answer["diagnostic"])
            self.assertEqual((answer["result"], answer["events"], answer["bytesOut"]), (None, events, None))
            self.holds("dest", b"precious")
            self.assertEqual(self.run_console(65, "decode", path, path), ("", f"ventoctl: {answer['diagnostic']}\n"))
            self.holds("broken", content)

    def test_files_that_cannot_be_read_or_written(self):
        source, missing = self.file("source", b"ab"), str(self.folder / "missing")
        answer = self.run_json(66, "encode", missing, source)
        self.assertEqual(answer["error"]["description"], "Source file does not exist")
        for status, *arguments in (
            (66, "decode", missing, source),
            (66, "decode", str(self.folder)),
            (66, "encode", source, source, "--key", missing),
            (73, "encode", source, str(self.folder / "no" / "such")),
            (73, "encode", source, str(self.folder)),
        ):
            answer = self.run_json(status, *arguments)
            self.assertEqual((list(answer), answer["error"], answer["bytesOut"]), (KEYS, None, None))
            self.assertTrue(answer["diagnostic"])
        self.holds("source", b"ab")
        self.assertFalse(os.path.exists(missing))

    def test_a_key_comes_back_from_the_container_as_far_as_it_is_there(self):
        source = self.file("source", bytes(range(200)))
        key = [[row % 50, row % 7] for row in range(210)]
        path = self.file("key.json", json.dumps(key))
        answer = self.run_json(0, "encode", source, str(self.folder / "keyed"), "--key", path)
        self.assertEqual((answer["key"], answer["error"], answer["result"]), (key, None, None))
        other = self.file("other.json", json.dumps([[0, 0]] * 12 + key[12:]))
        answer = self.run_json(0, "decode", "keyed", str(self.folder / "back"), "--key", other)
        self.assertEqual((answer["key"], answer["result"], answer["bytesOut"]), (key, None, 200))
        self.holds("back", bytes(range(200)))

    def test_keys_that_cannot_be_used(self):
        source = self.file("source", b"abracadabra")
        for key, kind in (([[0, 0]] * 11, "range"), ([[0, 2**63 - 1]] * 12, "overflow")):
            path = self.file("key.json", json.dumps(key))
            answer = self.run_json(65, "encode", source, source, "--key", path)
            self.assertEqual((answer["error"]["kind"], answer["key"]), (kind, key))
        for text in ("", "{}", "[[1]]", "[[1, 2], [1, 2.5]]", "[[1, 9223372036854775808]]", "[[1, null]]", "[3]"):
            path = self.file("key.json", text)
            answer = self.run_json(65, "encode", source, source, "--key", path)
            self.assertEqual((answer["error"], answer["key"]), (None, None))
            self.assertIn("key.json: ", answer["diagnostic"])
        self.holds("source", b"abracadabra")


if __name__ == "__main__":
    unittest.main()
