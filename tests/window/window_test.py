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


class WindowTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def open(self, *arguments, **options):
        window = harness.Window(VENTO, self.folder, *arguments, **options)
        self.addCleanup(window.close)
        return window

    def scenario(self, **keys):
        path = pathlib.Path(self.folder, "scenario.json")
        path.write_text(json.dumps(keys))
        return str(path)

    def open_slowly(self, **keys):
        """With a programme loaded whose transfer takes seconds."""
        self.file = programme(self.folder, length=2000)
        return self.open(self.file, simulate=self.scenario(reportMicroseconds=2000, **keys))

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
            window = self.open(language=language)
            self.assertCountEqual([node.get_name() for node in window.all("push button")], captions)
            self.assertEqual(window.items(), [[], [], []])
            self.assertIn(window.status(), ("Stato", "Status"))
            self.assertIsNone(window.bar())
            self.assertRegex(window.one("frame").get_name(), r"^VENTO-Programmazione \(simula(zione|tion)\)$")
            window.press(captions[-1])
            self.assertEqual(window.ends(), 0)

    def test_every_control_stands_in_its_place_at_every_scale(self):
        places = {"image VENTO": (8, 16, 220, 62), "push button OPEN": (56, 136, 105, 49),
                  "list TV column": (168, 136, 121, 49), "list DTT column": (312, 136, 121, 49),
                  "list SAT column": (456, 136, 121, 49), "push button PROGRAM": (56, 216, 153, 57),
                  "push button CODE READING": (256, 216, 137, 57), "push button CLOSE": (440, 216, 137, 57),
                  "label Status": (56, 328, 521, 57), "frame VENTO-Programmazione (simulation)": (0, 0, 618, 447)}
        for scale in (1, 2):
            window = self.open(programme(self.folder), language=ENGLISH, scale=scale)
            frame = window.windows()[0].get_geometry()
            self.assertEqual((frame.width, frame.height), (618 * scale, 447 * scale))
            self.assertAlmostEqual(frame.x, 800 - 618 * scale / 2, delta=scale)
            self.assertAlmostEqual(frame.y, 600 - 447 * scale / 2, delta=scale)
            found = {}
            corner = harness.Atspi.Component.get_position(window.one("frame"), harness.Atspi.CoordType.SCREEN)
            for node in window.tree():
                box = harness.Atspi.Component.get_extents(node, harness.Atspi.CoordType.SCREEN)
                place = (box.x - corner.x, box.y - corner.y, box.width, box.height)
                found[f"{node.get_role_name()} {node.get_name()}"] = place
            self.assertEqual({name: found.get(name) for name in places}, places)
            window.close_by_title_bar()
            window.ends()

    def test_programs_with_a_moving_bar_and_reads_back(self):
        file = programme(self.folder, "VENTO con spazi.qlb")
        simulate = self.scenario(reportMicroseconds=3000, remote={"arrivesAtPoll": 100})
        window = self.open(*file.name.split(" "), simulate=simulate)
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

    def test_opens_a_file_through_the_dialog_or_says_why_not(self):
        file, other = programme(self.folder), programme(self.folder, "altro.qlb")
        bad = pathlib.Path(self.folder, "VENTO-<b>.qlb")
        bad.write_text("1;a;1\n")
        window = self.open()
        window.press("APRI")
        window.one("dialog", DIALOG)
        listed = harness.eventually(lambda: [n.get_name() for n in window.all("table cell")], "the list of files")
        self.assertEqual([name in listed for name in (file.name, bad.name, other.name)], [True, True, False])
        self.choose(window, str(bad))
        texts = [node.get_name() for node in [window.one("push button", "OK"), *window.all("label")]]
        self.assertTrue(any("Riga 1" in each for each in texts) and str(bad) in texts, texts)
        window.press("OK")
        self.assertEqual(window.items(), [[], [], []])
        window.press("APRI")
        self.assertEqual(self.choose(window, str(file)), bad.name)
        window.one("push button", "PROGRAMMA")
        self.assertEqual(window.items(), LABELS)
        window.press("APRI")  # and once more, to think better of it
        window.one("dialog")
        window.type("Escape")
        harness.eventually(lambda: not window.all("dialog"), "the end of the dialog")
        self.assertEqual(window.items(), LABELS)
        window.press("CHIUDI")
        self.assertEqual(window.ends(), 0)
        self.assertEqual((file.exists(), other.exists()), (False, True))

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

    def test_loads_what_is_dropped_on_it_and_begins_nothing_while_an_operation_runs(self):
        letter = pathlib.Path(self.folder, "letter.txt")
        letter.write_text("1;a;1;x;y\n")
        window = self.open(simulate=self.scenario(reportMicroseconds=2000))
        self.assertFalse(window.drop(letter))
        self.assertTrue(window.drop(programme(self.folder, length=2000)))
        window.press("PROGRAMMA")
        harness.eventually(window.bar, "the bar")
        for caption in ("PROGRAMMA", "Leggi Programmazione", "APRI"):
            window.press(caption)
        self.assertTrue(window.drop(programme(self.folder, "VENTO-b.qlb", [["B"]] * 3)))
        self.assertIsNotNone(window.bar())
        window.await_status(SUCCESS, 60)
        time.sleep(0.3)
        self.assertEqual((window.status(), window.all("dialog")), (SUCCESS, []))
        self.assertEqual(window.items(), LABELS)

    def test_closing_ends_whatever_is_open_and_deletes_the_file(self):
        image = pathlib.Path(self.folder, "image.json")
        ways = (lambda window: window.press("CHIUDI"), lambda window: window.close_by_title_bar(),
                lambda window: window.process.send_signal(signal.SIGTERM))
        for close, moment in zip(ways * 2, ("wait", "transfer", "wait", "transfer", "wait", "transfer")):
            window = self.open_slowly(image=image.name, remote={"arrivesAtPoll": 100000 if moment == "wait" else 1})
            window.press("PROGRAMMA")
            window.await_status(WAITING) if moment == "wait" else harness.eventually(window.bar, "the bar")
            window.press("Leggi Programmazione")  # what is pending must not run either
            close(window)
            self.assertEqual(window.ends(5), 0)
            self.assertFalse(self.file.exists())
            words = sum(map(len, json.loads(image.read_text())["memory"].values()))
            self.assertLess(words, 1 if moment == "wait" else 6000)
            image.unlink()
        window = self.open_slowly()
        window.press("APRI")
        window.one("dialog")
        window.process.send_signal(signal.SIGTERM)
        self.assertEqual(window.ends(), 0)
        self.assertFalse(self.file.exists())

    def test_tells_of_a_transmitter_that_is_missing_or_may_not_be_opened(self):
        mine = {"vendorId": 1240, "productId": 1, "opens": False}
        for language, text, program, interfaces in (
                (ITALIAN, "Programmatore non collegato", "PROGRAMMA", []),
                (ENGLISH, "Transmitter not connected", "PROGRAM", [mine])):
            simulate = self.scenario(interfaces=interfaces)
            window = self.open(programme(self.folder), language=language, simulate=simulate)
            window.press(CAPTIONS[language][1])
            box = harness.eventually(lambda: window.all("alert") or window.all("dialog"), "the box")[0]
            labels = [node.get_name() for node in window.below(box) if node.get_role_name() == "label"]
            self.assertIn(text, labels)
            self.assertEqual(any("opens" in each for each in labels), bool(interfaces), labels)
            window.type("Return")
            harness.eventually(lambda: window.enabled(program), "the program button")

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
        for simulate in ("missing.json", self.scenario(remote={"version": 300})):
            window = self.open(file, simulate=simulate)
            labels = [node.get_name() for node in [window.one("push button", "OK"), *window.all("label")]]
            self.assertTrue(any(each.startswith(simulate + ": ") for each in labels), labels)
            window.press("OK")
            self.assertEqual(window.ends(), 1)
        self.assertTrue(file.exists())

    def test_tells_when_the_simulated_remote_could_not_be_kept(self):
        place = pathlib.Path(self.folder, "place")
        place.mkdir()
        file = programme(self.folder, length=8)
        window = self.open(file, simulate=self.scenario(image="place/image.json"))
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
