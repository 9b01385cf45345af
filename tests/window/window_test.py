#!/usr/bin/python3
"""window_test.py VENTO: the real window, used as an operator or a screen reader would."""

import json
import os
import pathlib
import signal
import sys
import tempfile
import time
import unittest

import harness

ITALIAN, ENGLISH = "it_IT.UTF-8", "en_GB.UTF-8"
CAPTIONS = {ITALIAN: ["APRI", "Leggi Programmazione", "CHIUDI"], ENGLISH: ["OPEN", "CODE READING", "CLOSE"]}
DIALOG = "Seleziona il file da aprire"
SUCCESS = "Programmazione eseguita con successo"
WAITING = "Posizionare il telecomando di fronte al trasmettitore"
LONG_LABEL = "Un ricevitore dal nome davvero troppo lungo per il suo riquadro"
LABELS = [["Alfa 100"], [LONG_LABEL], ["Gamma 300"]]
VENTO = ""


def programme(folder, name="VENTO-prova.qlb", labels=LABELS, length=400):
    """A programme file with three lists of so many bytes that read back as PROVA-01, PROVA-02, PROVA-03."""
    path = pathlib.Path(folder, name)
    lines = []
    for column, [label] in enumerate(labels, 1):
        codes = [ord(each) + 128 for each in f"PROVA-0{column}"] + [column] * (length - 8)
        lines += [f"{column};{label};{','.join(map(str, codes))};x;y\n"] * 2
    path.write_text("".join(lines), encoding="windows-1252")
    return path


def scenario(folder, **keys):
    path = pathlib.Path(folder, "scenario.json")
    path.write_text(json.dumps(keys))
    return path


class WindowTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def open(self, *arguments, simulate="1", **options):
        window = harness.Window(VENTO, self.folder, *arguments, simulate=str(simulate), **options)
        self.addCleanup(window.close)
        return window

    def open_slowly(self, **keys):
        """With a programme loaded whose transfer takes seconds."""
        self.file = programme(self.folder, length=2000)
        return self.open(self.file, simulate=scenario(self.folder, reportMicroseconds=2000, **keys))

    def choose(self, window, text):
        """Fills in the file dialog; what stood in it before."""
        dialog_text = window.one("text", "File name:")
        before = harness.Atspi.Text.get_text(dialog_text, 0, -1)
        harness.Atspi.EditableText.set_text_contents(dialog_text, text)
        window.type("Return")
        harness.eventually(lambda: not window.all("text", "File name:"), "the end of the dialog")
        return before

    def test_starts_without_a_file_in_the_language_of_the_desktop(self):
        for language, captions in CAPTIONS.items():
            with self.subTest(language), self.open(language=language) as window:
                buttons = [node.get_name() for node in window.all("push button")]
                self.assertCountEqual(buttons, captions)
                self.assertEqual(window.items(), [[], [], []])
                self.assertIn(window.status(), ("Stato", "Status"))
                self.assertIsNone(window.bar())
                [frame] = window.all("frame")
                self.assertRegex(frame.get_name(), r"^VENTO-Programmazione \(simula(zione|tion)\)$")
                window.press(captions[-1])
                self.assertEqual(window.ends(), 0)

    def test_every_control_stands_in_its_place_at_every_scale(self):
        places = {"image VENTO": (8, 16, 220, 62), "push button OPEN": (56, 136, 105, 49),
                  "list TV column": (168, 136, 121, 49), "list DTT column": (312, 136, 121, 49),
                  "list SAT column": (456, 136, 121, 49), "push button PROGRAM": (56, 216, 153, 57),
                  "push button CODE READING": (256, 216, 137, 57), "push button CLOSE": (440, 216, 137, 57),
                  "label Status": (56, 328, 521, 57), "frame VENTO-Programmazione (simulation)": (0, 0, 618, 447)}
        for scale in (1, 2):
            file = programme(self.folder)
            with self.subTest(scale=scale), self.open(file, language=ENGLISH, scale=scale) as window:
                found = {}
                frame = window.windows()[0].get_geometry()
                self.assertEqual((frame.width, frame.height), (618 * scale, 447 * scale))
                self.assertAlmostEqual(frame.x, 800 - 618 * scale / 2, delta=scale)
                self.assertAlmostEqual(frame.y, 600 - 447 * scale / 2, delta=scale)
                corner = harness.Atspi.Component.get_position(window.one("frame"), harness.Atspi.CoordType.SCREEN)
                for node in window.tree():
                    box = harness.Atspi.Component.get_extents(node, harness.Atspi.CoordType.SCREEN)
                    found[f"{node.get_role_name()} {node.get_name()}"] = (
                        box.x - corner.x, box.y - corner.y, box.width, box.height)
                self.assertEqual({name: found.get(name) for name in places}, places)

    def test_programs_with_a_moving_bar_and_reads_back(self):
        file = programme(self.folder, "VENTO con spazi.qlb")
        window = self.open(*file.name.split(" "), simulate=scenario(self.folder, reportMicroseconds=3000,
                                                                             remote={"arrivesAtPoll": 100}))
        self.assertEqual(window.items(), LABELS)
        values = []
        window.press("PROGRAMMA")
        window.await_status(WAITING)
        while not values or SUCCESS not in window.status():
            if bar := window.bar():
                values.append(bar)
        self.assertEqual(values, sorted(values))
        self.assertGreater(len(set(values)), 5)
        self.assertEqual({largest for _, largest in values}, {1200})
        self.assertIsNone(window.bar())
        window.press("Leggi Programmazione")
        window.await_status("TV PROVA-01\nDTT PROVA-02\nSAT PROVA-03")
        window.close_by_title_bar()
        self.assertEqual(window.ends(), 0)
        self.assertFalse(file.exists())

    def test_opens_a_file_through_the_dialog(self):
        file, other = programme(self.folder), programme(self.folder, "altro.qlb")
        window = self.open()
        window.press("APRI")
        window.one("dialog", DIALOG)
        listed = harness.eventually(lambda: [n.get_name() for n in window.all("table cell")], "the list of files")
        self.assertIn(file.name, listed)
        self.assertNotIn(other.name, listed)
        self.choose(window, str(file))
        window.one("push button", "PROGRAMMA")
        self.assertEqual(window.items(), LABELS)
        window.press("APRI")  # and once more, to think better of it
        self.assertEqual(harness.Atspi.Text.get_text(window.one("text", "File name:"), 0, -1), file.name)
        window.type("Escape")
        harness.eventually(lambda: not window.all("dialog"), "the end of the dialog")
        self.assertEqual(window.items(), LABELS)
        window.press("CHIUDI")
        self.assertEqual(window.ends(), 0)
        self.assertFalse(file.exists())
        self.assertTrue(other.exists())

    def test_says_why_a_file_does_not_load(self):
        bad = pathlib.Path(self.folder, "VENTO-<b>.qlb")
        bad.write_text("1;a;1\n")
        window = self.open()
        window.press("APRI")
        self.choose(window, str(bad))
        texts = [node.get_name() for node in [window.one("push button", "OK"), *window.all("label")]]
        self.assertTrue(any("Riga 1" in each for each in texts), texts)
        self.assertIn(str(bad), texts)
        window.press("OK")
        self.assertEqual(window.items(), [[], [], []])

    def test_loads_a_file_that_is_dropped_on_it(self):
        file = programme(self.folder)
        other = pathlib.Path(self.folder, "letter.txt")
        other.write_text("1;a;1;x;y\n")
        window = self.open()
        self.assertFalse(window.drop(other))
        self.assertTrue(window.drop(file))
        window.one("push button", "PROGRAMMA")
        self.assertEqual(window.items(), LABELS)

    def test_escape_cancels_the_wait_and_nothing_else(self):
        window = self.open_slowly(remote=None)
        window.type("Escape")
        for caption in ("PROGRAMMA", "Leggi Programmazione"):
            window.press(caption)
            window.await_status(WAITING)
            self.assertEqual(window.enabled("PROGRAMMA"), caption == "PROGRAMMA")
            window.type("Escape")
            window.await_status("Programmazione annullata")
            self.assertTrue(window.enabled("PROGRAMMA"))

    def test_clicks_during_an_operation_begin_nothing(self):
        window = self.open_slowly()
        window.press("PROGRAMMA")
        harness.eventually(window.bar, "the bar")
        for caption in ("PROGRAMMA", "Leggi Programmazione", "APRI"):
            window.press(caption)
        self.assertTrue(window.drop(programme(self.folder, "VENTO-b.qlb", [["B"]] * 3)))
        self.assertIsNotNone(window.bar())
        window.await_status(SUCCESS, 60)
        time.sleep(0.3)
        self.assertEqual(window.status(), SUCCESS)
        self.assertEqual(window.all("dialog"), [])
        self.assertEqual(window.items(), LABELS)

    def test_closing_ends_an_operation_and_deletes_the_file(self):
        ways = {"button": lambda window: window.press("CHIUDI"),
                "title bar": lambda window: window.close_by_title_bar(),
                "signal": lambda window: window.process.send_signal(signal.SIGTERM)}
        for name, close in ways.items():
            for moment in ("wait", "transfer"):
                image = pathlib.Path(self.folder, "image.json")
                image.unlink(missing_ok=True)
                arrives = {"remote": {"arrivesAtPoll": 100000 if moment == "wait" else 1}}
                with self.subTest(way=name, moment=moment), self.open_slowly(image=image.name, **arrives) as window:
                    window.press("PROGRAMMA")
                    window.await_status(WAITING) if moment == "wait" else harness.eventually(window.bar, "the bar")
                    window.press("Leggi Programmazione")  # what is pending must not run either
                    close(window)
                    self.assertEqual(window.ends(5), 0)
                    self.assertFalse(self.file.exists())
                    words = sum(map(len, json.loads(image.read_text())["memory"].values()))
                    self.assertLess(words, 1 if moment == "wait" else 6000)

    def test_closing_by_signal_closes_an_open_dialog_too(self):
        file = programme(self.folder)
        window = self.open(file)
        window.press("APRI")
        window.one("dialog")
        window.process.send_signal(signal.SIGTERM)
        self.assertEqual(window.ends(), 0)
        self.assertFalse(file.exists())

    def test_tells_of_a_transmitter_that_is_missing_or_may_not_be_opened(self):
        mine = {"vendorId": 1240, "productId": 1, "opens": False}
        for language, text in ((ITALIAN, "Programmatore non collegato"), (ENGLISH, "Transmitter not connected")):
            for interfaces in ([], [mine]):
                simulate = scenario(self.folder, interfaces=interfaces)
                with self.subTest(text=text, interfaces=interfaces), \
                        self.open(programme(self.folder), language=language, simulate=simulate) as window:
                    window.press(CAPTIONS[language][1])
                    box = harness.eventually(lambda: window.all("alert") or window.all("dialog"), "the box")[0]
                    labels = [node.get_name() for node in window._below(box) if node.get_role_name() == "label"]
                    self.assertIn(text, labels)
                    self.assertEqual(any("opens" in each for each in labels), bool(interfaces), labels)
                    window.type("Return")
                    harness.eventually(lambda: window.enabled("PROGRAMMA" if language == ITALIAN else "PROGRAM"),
                                       "the program button")

    def test_is_used_by_keyboard_alone(self):
        file = programme(self.folder, length=8)
        window = self.open(file)
        focused = []
        window.type()
        for _ in range(7):
            state = harness.Atspi.StateType.FOCUSED
            focused += [node.get_name() for node in window.tree() if node.get_state_set().contains(state)
                        and node.get_role_name() in ("push button", "list")]
            window.type("Tab")
        self.assertEqual(focused, ["Leggi Programmazione", "CHIUDI", "APRI", "Colonna TV", "Colonna DTT",
                                   "Colonna SAT", "PROGRAMMA"])
        window.type("Shift_L+Tab", "Return")
        window.await_status(SUCCESS)
        window.type("Alt_L+l")
        window.await_status("PROVA-01")
        window.type("Return")  # the program button has kept the focus
        window.await_status(SUCCESS)
        window.type("Alt_L+c")
        self.assertEqual(window.ends(), 0)

    def test_refuses_a_scenario_that_it_can_not_use(self):
        file = programme(self.folder)
        pathlib.Path(self.folder, "bad.json").write_text('{"remote": {"version": 300}}')
        for simulate in ("missing.json", "bad.json"):
            with self.subTest(simulate), self.open(file, simulate=simulate) as window:
                labels = [node.get_name() for node in [window.one("push button", "OK"), *window.all("label")]]
                self.assertTrue(any(each.startswith(simulate + ": ") for each in labels), labels)
                window.press("OK")
                self.assertEqual(window.ends(), 1)
                self.assertTrue(file.exists())

    def test_tells_when_the_simulated_remote_could_not_be_kept(self):
        place = pathlib.Path(self.folder, "place")
        place.mkdir()
        file = programme(self.folder, length=8)
        window = self.open(file, simulate=scenario(self.folder, image="place/image.json"))
        window.press("PROGRAMMA")
        window.await_status(SUCCESS)
        place.rmdir()
        window.press("CHIUDI")
        window.press("OK")
        self.assertEqual(window.ends(), 1)
        self.assertFalse(file.exists())


if __name__ == "__main__":
    harness.inside_a_desktop()
    VENTO = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
