#!/usr/bin/python3
"""window_test.py VENTO: the real window, Qt's, that of vento.exe or the page in a browser, used as an operator or a screen
reader would."""

import json
import os
import pathlib
import re
import signal
import sys
import tempfile
import time
import unittest

import common
from common import LABELS, eventually

WINDOWS, WEB = (sys.argv[1].endswith(ending) for ending in (".exe", ".html"))
QT = not WINDOWS and not WEB
TRACED = {"traced": True} if WINDOWS else {}
CAPTIONS = {"it": ["Leggi Programmazione", "CHIUDI", "APRI"], "en": ["CODE READING", "CLOSE", "OPEN"]}
READING = CAPTIONS["it"][0]
DIALOG = "Seleziona il file da aprire"
SUCCESS, ENGLISH_SUCCESS = "Programmazione eseguita con successo", "Operation succesfully completed"
WAITING = "Posizionare il telecomando di fronte al trasmettitore"
READ = "TV PROVA-01\nDTT PROVA-02\nSAT PROVA-03"
# Left, top, right and bottom, in pixels at the scale of 1.
PLACES = {"VENTO": (8, 16, 228, 78), "OPEN": (56, 136, 161, 185), "TV column": (168, 136, 289, 185),
          "DTT column": (312, 136, 433, 185), "SAT column": (456, 136, 577, 185), "PROGRAM": (56, 216, 209, 273),
          "CODE READING": (256, 216, 393, 273), "CLOSE": (440, 216, 577, 273), "Status": (56, 328, 577, 385)}
if WINDOWS:  # which tells of what is hidden too
    PLACES["Progress"] = (64, 400, 585, 425)


def contrast(*colours):
    """Of two colours, from 1 to 21."""
    linear = lambda part: part / 3294.6 if part <= 10 else ((part / 255 + 0.055) / 1.055) ** 2.4
    light = sorted(sum(map(lambda share, part: share * linear(part), (0.2126, 0.7152, 0.0722), each)) + 0.05 for each in colours)
    return light[1] / light[0]


class WindowTest(common.Case):
    def test_starts_without_a_file_in_the_language_of_the_desktop(self):
        for language, simulated in (("it", "simulazione"), ("en", "simulation")):
            window = self.open(language=language)
            self.assertCountEqual(window.buttons(), CAPTIONS[language])
            self.assertEqual((window.items(), window.status(), window.bar()), ([[], [], []], "", None))
            self.assertEqual(window.frame()[0], f"VENTO-Programmazione ({simulated})")
            if WINDOWS:  # which tells of what is hidden too
                hidden = [each["enabled"] for each in window.controls("Button") if not each["visible"]]
                self.assertEqual(hidden, [False, False])
            window.picture(f"start-{language}")
            window.press(CAPTIONS[language][1])
            self.assert_ends(window)

    def test_every_control_stands_in_its_place_at_every_scale(self):
        for scale in Window.SCALES:
            window = self.open(self.programme(), language="en", scale=scale)
            places = window.places()
            self.assertEqual({name: places.get(name) for name in PLACES},
                             {name: [int(edge * scale + 0.5) for edge in place] for name, place in PLACES.items()})
            _, (left, top, right, bottom), area = window.frame()
            if scale == 1 or not WINDOWS:  # Wine's frame has one size, and a new screen another middle
                self.assertEqual(area, [618 * scale, 447 * scale])
            if QT or WINDOWS and scale == 1:
                self.assertAlmostEqual(left + right, 1600, delta=2 * scale)
                self.assertAlmostEqual(top + bottom, 1200, delta=2 * scale)
            window.picture(f"density-{scale}")
            self.close(window)

    def test_programs_with_a_moving_bar_reads_back_and_deletes_the_file(self):
        file = self.programme("VENTO con spazi.qlb", length=1000)
        simulate = self.scenario(reportMicroseconds=5000, remote={"arrivesAtPoll": 100})
        window = self.open(*file.name.split(" "), simulate=simulate)
        self.assertEqual(window.items(), LABELS)
        window.picture("loaded")
        window.press("PROGRAMMA")
        window.await_status(WAITING)
        window.picture("waiting")
        bars = []

        def succeeds():
            if bar := window.bar():
                bars.append(bar)
                window.picture("bar")
            return SUCCESS in window.status()
        eventually(succeeds, "the success", 90)
        self.assertEqual(bars, sorted(bars))
        self.assertLess(bars[0], bars[-1])
        self.assertEqual({largest for _, largest in bars}, {3000})
        self.assertIsNone(window.bar())
        window.picture("success")
        window.press("Leggi Programmazione")
        window.await_status(READ)
        window.picture("read")
        if not WEB:  # where it is the browser's business
            window.key("Control_L+c")
            eventually(lambda: window.copied() == READ, "all of the status")
            window.drag_mouse((200, 357), (450, 357))
            window.key("Control_L+c")
            eventually(lambda: window.copied() == READ.split("\n")[1], "what is selected")
        self.close(window, file)

    def test_names_the_columns_that_a_run_has_left_out_while_the_file_is_still_there(self):
        file = self.programme()
        window = self.open(file, simulate=self.scenario(faults=[{"cycle": 60, "kind": "readFails"}]))
        window.press("PROGRAMMA")
        texts = "\n".join(window.box())
        window.picture("incomplete")
        self.assertIn("Ripetere la programmazione", texts)
        self.assertEqual([f"{column}: non scritta" in texts for column in ("TV", "DTT", "SAT")], [False, True, False])
        self.assertEqual((window.status(), file.exists()), (SUCCESS, True))
        window.answer()
        self.close(window, file)

    @unittest.skipIf(WEB, "the browser's dialog, which nothing can look into")
    def test_opens_a_file_through_the_dialog_or_says_why_not(self):
        file, other = self.programme("VENTO perché.qlb"), self.programme("altro.qlb")
        bad = self.folder / ("VENTO-è.qlb" if WINDOWS else "VENTO-<b>.qlb")
        bad.write_text("1;a;1\n")
        window = self.open()
        window.press("APRI")
        self.assertEqual(window.dialog(), (DIALOG, ""))
        if not WINDOWS:
            listed = eventually(lambda: window.names("table cell"), "the list of files")
            self.assertEqual([each.name in listed for each in (file, bad, other)], [True, True, False])
        window.fill(bad)
        texts = "\n".join(window.box())
        self.assertIn("Riga 1, campo 4", texts)
        self.assertIn(bad.name, texts)
        window.picture("bad-file")
        window.answer()
        self.assertEqual(window.items(), [[], [], []])
        window.press("APRI")
        self.assertEqual(window.dialog(), (DIALOG, bad.name))
        window.fill(file)
        eventually(lambda: "PROGRAMMA" in window.buttons(), "the program button")
        window.press("APRI")  # and once more, to think better of it
        self.assertEqual(window.dialog(), (DIALOG, file.name))
        window.picture("dialog")
        window.fill()
        self.assertEqual(window.items(), LABELS)
        window.press("CHIUDI")
        self.assert_ends(window, file)
        self.assertTrue(other.exists())

    def test_escape_or_a_click_cancels_the_wait_and_nothing_else(self):
        window = self.open_slowly(remote=None)
        window.key("Escape")
        ways = [("PROGRAMMA", window.key, "Escape"), (READING, window.key, "Escape"), (READING, window.press, "Esc: annulla")]
        for caption, cancel, by in ways:
            window.press(caption)
            window.await_status(WAITING)
            self.assertEqual(window.enabled("PROGRAMMA"), caption == "PROGRAMMA")
            if caption == READING and not QT:  # what can not be done now is dimmed
                self.assertEqual([window.enabled(each) for each in CAPTIONS["it"]], [False, True, False])
            cancel(by)
            window.await_status("Programmazione annullata")
            self.assertEqual([window.enabled(each) for each in (*CAPTIONS["it"], "PROGRAMMA")], [True] * 4)
        eventually(lambda: window.focus() == READING, "the focus back")
        self.assertNotIn("Esc: annulla", window.buttons())

    def test_loads_what_is_dropped_on_it_and_begins_nothing_while_an_operation_runs(self):
        letter = self.folder / "letter.txt"
        letter.write_text("1;a;1;x;y\n")
        window = self.open(simulate=self.scenario(remote=None))
        self.assertFalse(window.drop(letter))
        self.assertEqual(window.items(), [[], [], []])
        window.drop(self.programme("VENTO perché.QLB", length=2000))
        window.press("PROGRAMMA")
        window.await_status(WAITING)
        for caption in ("PROGRAMMA", "Leggi Programmazione", "APRI"):
            window.press(caption)
        window.drop(self.programme("VENTO-b.qlb", [["B"]] * 3))
        window.key("Escape")
        window.await_status(cancelled := "Programmazione annullata")
        time.sleep(0.3)
        self.assertEqual((window.status(), window.items(), window.shows_a_dialog()), (cancelled, LABELS, False))

    @unittest.skipIf(WEB, "what a scenario has written stays in the page")
    def test_closing_ends_whatever_is_open_and_deletes_the_file(self):
        image = self.folder / "image.json"
        ways = (lambda window: window.press("CHIUDI"), Window.close, Window.end_session)
        for close, moment in zip(ways * 2, ("wait", "transfer") * 3):
            # Slow enough for what is done in the middle of it on a busy machine.
            window = self.open_slowly(20000, image=image.name, remote={"arrivesAtPoll": 100000 if moment == "wait" else 1})
            window.press("PROGRAMMA")
            window.await_status(WAITING) if moment == "wait" else eventually(window.bar, "the bar")
            for caption in ("Leggi Programmazione", "APRI"):
                window.press(caption)  # what is pending must not run either
            close(window)
            self.assert_ends(window, self.file)
            words = sum(map(len, json.loads(image.read_text())["memory"].values()))
            self.assertLess(words, 1 if moment == "wait" else 6000)
            image.unlink()
        window = self.open_slowly()
        window.press("APRI")
        window.dialog()
        window.end_session()
        self.assert_ends(window, self.file)

    def test_tells_of_a_transmitter_that_is_missing_or_may_not_be_opened(self):
        for language, text, program, interfaces in (
                ("it", "Programmatore non collegato", "PROGRAMMA", []),
                ("en", "Transmitter not connected", "PROGRAM", [{"vendorId": 1240, "productId": 1, "opens": False}])):
            window = self.open(self.programme(), language=language, simulate=self.scenario(interfaces=interfaces))
            state = {"it": "Trasmettitore: non collegato", "en": "Transmitter: connected, but you are not allowed"}[language]
            for caption in (CAPTIONS[language][0], program):
                self.assertIn(state, window.description(caption))
            window.press(CAPTIONS[language][0])
            texts = window.box()
            window.picture(f"box-{language}")
            self.assertIn(text, texts)
            self.assertEqual(any("opens" in each for each in texts), bool(interfaces), texts)
            window.answer()
            eventually(lambda: window.enabled(program), "the program button")
            self.assertEqual(window.status(), "")
            self.close(window)

    def test_is_used_by_keyboard_alone(self):
        window = self.open(self.programme(length=8), language="en")
        for caption in ("CODE READING", "CLOSE", "OPEN", "TV column", "DTT column", "SAT column", "PROGRAM"):
            eventually(lambda: window.focus() == caption, f"the focus on {caption}")
            if caption != "PROGRAM":
                for key in (*"prlo", "Tab"):  # a letter alone presses no button
                    window.key(key)
        self.assertEqual((window.status(), window.shows_a_dialog()), ("", False))
        for key, text, caption in (("Return", ENGLISH_SUCCESS, "PROGRAM"), ("Tab", "", "CODE READING"),
                                   ("space", READ, "CODE READING")):
            window.key(key)
            window.await_status(text)
            eventually(lambda: window.focus() == caption, f"the focus on {caption}")
        for key, text in (("p", ENGLISH_SUCCESS), ("r", READ)):
            window.key(f"Alt_L+{key}")
            window.await_status(text)
        window.key("Alt_L+l")
        self.assert_ends(window)

    @unittest.skipUnless(WINDOWS, "menus and title bars are another program's there")
    def test_an_operation_goes_on_and_closing_ends_it_in_the_loops_of_the_system(self):
        for command in (SC_HOLD_CAPTION, SC_KEYMENU):
            window = self.open_slowly()
            window.press("PROGRAMMA")
            eventually(window.bar, "the bar")
            window.enter_loop(command)
            window.await_status(SUCCESS)
            self.assertTrue(window.in_loop())
            self.close(window, self.file)
            window = self.open_slowly(remote={"arrivesAtPoll": 100000})
            window.press("PROGRAMMA")
            window.await_status(WAITING)
            window.enter_loop(command)
            self.close(window, self.file)

    @unittest.skipUnless(QT, "the other system's file names and signals")
    def test_takes_a_single_argument_as_it_stands(self):
        neighbour, file = self.programme(), self.programme('VENTO-"prova".qlb', [["12"], ["b"], ["c"]])
        self.close(self.open(file.name), file)
        self.assertTrue(neighbour.exists())
        self.close(self.open(f'"{neighbour.name}"'), neighbour)

    @unittest.skipIf(WEB, "a file comes by a drop there")
    def test_leaves_what_it_may_not_write_and_reads_no_file_that_is_too_large(self):
        large = self.folder / "large.qlb"
        with large.open("wb") as sparse:
            sparse.truncate(5 << 30)
        protected = self.programme()
        protected.chmod(0o444)
        for path, items in ((protected, LABELS), (large, [[], [], []]), (self.folder, [[], [], []])):
            window = self.open(path)
            self.assertEqual(window.items(), items)
            if QT:  # not by a limit to its addresses: under a sanitizer the program reserves far more than it uses
                status = pathlib.Path(f"/proc/{window.process.pid}/status").read_text()
                self.assertLess(int(re.search(r"VmHWM:\s+(\d+)", status)[1]), 1 << 20, "KiB at the most so far")
            self.close(window)
        self.assertEqual([each.exists() for each in (protected, large)], [True, False])

    @unittest.skipUnless(QT, "the other system's signals")
    def test_a_signal_ends_it_at_any_time_unless_it_was_ignored_from_the_start(self):
        window = self.open(simulate="missing.json")
        window.box()
        window.end_session()
        self.assert_ends(window, status=1)
        file = self.programme(length=8)
        window = self.open(file, prepare=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        window.process.send_signal(signal.SIGHUP)
        window.press("PROGRAMMA")
        window.await_status(SUCCESS)
        window.end_session()
        self.assert_ends(window, file)

    def test_a_screen_reader_hears_how_an_operation_goes_and_finds_the_labels(self):
        window = self.open_slowly(remote=None)
        self.assertIn(f"Colonna TV: {LABELS[0][0]}" if QT else "Colonna TV", window.names("list"))
        spoken = self.enterContext(window.spoken())
        window.press("PROGRAMMA")
        window.await_status(WAITING)
        window.key("Escape")
        eventually(lambda: "Programmazione annullata" in spoken(), "that it was cancelled")
        self.close(window)
        window = self.open_slowly(remote={"arrivesAtPoll": 200})
        window.press("PROGRAMMA")
        eventually(lambda: SUCCESS in spoken(), "the success", 90)
        values = [each for each in spoken() if isinstance(each, int)]
        if not WINDOWS:  # where the system's own bar tells of its moves
            self.assertEqual(values, sorted(values))
            self.assertTrue(10 < len(values) <= 101, values)
        self.assertEqual(sum(WAITING in str(each) for each in spoken()), 2)
        window.drop(self.programme("VENTO-vuoto.qlb", [[" "]] * 3))
        eventually(lambda: window.items() == [[" "]] * 3, "the labels")
        window.press("PROGRAMMA")
        eventually(lambda: "Errore" in str(spoken()[-1]), "the failure")

    def test_says_of_every_control_what_it_would_do_now(self):
        self.file = self.programme("VENTO-b.qlb", [["<b>B</b>"], ["\x1bC"], ["D"]], length=2000)
        bad = self.folder / "bad.qlb"
        bad.write_text("1;a;1\n")
        window = self.open(bad)
        if WEB:  # a drop, and no silent start
            window.answer()
        for description in window.descriptions("list"):
            end = re.escape(native(bad))
            self.assertRegex(description, f"^Colonna .*: Il file non è stato caricato: Riga 1, campo 4: (.|\n)*{end}$")
        self.close(window, bad)
        desktop = self.enterContext(Desktop()) if QT else None
        window = self.open(self.file, simulate=self.scenario(reportMicroseconds=10000, remote={"arrivesAtPoll": 200}))
        self.assertEqual(window.descriptions("list"), ["Colonna TV: <b>B</b>", "Colonna DTT: C", "Colonna SAT: D"])
        shown = native(self.file)
        deletes = "Chiede se eliminare il file" if WEB else "Elimina il file"
        self.assertIn(f"{deletes} {shown}", window.description("CHIUDI"))
        self.assertIn(f"File aperto: {shown}", window.description("APRI"))
        self.assertRegex(window.description("PROGRAMMA"), r"Trasmettitore: collegato$")
        window.press("PROGRAMMA")
        window.await_status(WAITING)
        window.press("Esc: annulla")
        window.await_status("Programmazione annullata")
        self.assertNotIn("Esc: annulla", window.buttons())
        window.press("PROGRAMMA")
        eventually(window.bar, "the bar")
        self.assertIn("lascia nel telecomando una sezione incompleta", window.description("CHIUDI"))
        self.assertIn("un'operazione è in corso", window.description("APRI"))
        eventually(lambda: re.search(r"^Colonna (TV|DTT|SAT), \d+ %$", "".join(window.descriptions("progress bar"))),
                   "the column that is being written")  # there is a turn before it is announced
        window.await_status(SUCCESS, 60)
        eventually(lambda: f"File aperto: {shown}" in window.description("APRI"), "the open file")
        if not QT:
            return
        shares = [told["progress"] for _, told in desktop.told if "progress" in told]
        self.assertEqual((shares, len(set(shares))), (sorted(shares), len(shares)))
        eventually(lambda: not desktop.told[-1][1]["progress-visible"], "the end of the bar on the icon")
        self.assertGreater(len(shares), 10)

    def test_tells_the_details_of_a_failure_on_demand(self):
        for programme, cycle, expected in (([[" "]] * 3, 1000, "Nel telecomando non è stato scritto nulla"),
                                           (LABELS, 58, "TV: scritta, ma non verificata")):
            faults = [{"cycle": cycle, "kind": "readFails"}]
            window = self.open(self.programme(labels=programme), simulate=self.scenario(faults=faults))
            self.assertNotIn("F1: dettagli", window.buttons())
            window.press("PROGRAMMA")
            window.await_status("Errore")
            for ask in (lambda: window.press("F1: dettagli"), lambda: window.key("F1")):
                ask()
                if not WEB:  # whoever does not see the box may ask once more
                    window.box()
                    window.press("F1: dettagli")
                status, details = [each for each in window.box() if each][:2]
                self.assertIn("Errore", status)
                self.assertIn(expected, details)
                window.answer()
            self.close(window)

    @unittest.skipIf(WEB, "the browser's settings")
    def test_follows_the_contrast_of_the_desktop_with_edges_that_can_be_seen(self):
        white, black, corner, yellow = (255, 255, 255), (0, 0, 0), (5, 5), (70, 220)
        edges = {"OPEN": (56, 160), "a column": (168, 160), "the bar": (64, 412), "its part that is done": (70, 412)}
        desktop = self.enterContext(Desktop()) if QT else None
        window = self.open_slowly(20000, options=TRACED)
        window.press("PROGRAMMA")
        eventually(lambda: window.bar() and window.bar()[0] > 200, "the bar")

        def check(ground, button):
            eventually(lambda: (window.colour(*corner), window.colour(*yellow)) == (ground, button), "the colours")
            seen = {name: contrast(window.colour(*place), ground) for name, place in edges.items()}
            self.assertGreaterEqual(min(seen.values()), 2.95, seen)  # Wine's own blue has that
            window.picture(f"contrast-{ground[0]}-{button[0]}")
        check(white, (255, 255, 0))
        if WINDOWS:
            window.ask_for_contrast()
            check(black, black)
            controls = {each["handle"] for each in window.form()["controls"]}
            self.assertEqual(controls - window.received("WM_SYSCOLORCHANGE"), set())
        else:
            for scheme, ground in ((1, black), (0, white)):
                desktop.change("color-scheme", scheme)
                desktop.change("contrast", 1)
                check(ground, ground)
            desktop.change("contrast", 0)
            check(white, (255, 255, 0))

    @unittest.skipIf(WEB, "the browser's window")
    def test_is_within_reach_on_a_small_screen_and_calls_for_attention_from_behind_another_window(self):
        window = self.open_slowly(500, options=self.enterContext(screen("800x480", 1.5)) | TRACED)
        if QT:
            left_edge, right_edge, title, bottom_edge = eventually(
                lambda: window.numbers(window.windows()[0], "_NET_FRAME_EXTENTS"), "the frame")
        _, (left, top, right, bottom), (width, height) = window.frame()
        if QT:
            left, top, right, bottom = left - left_edge, top - title, right + right_edge, bottom + bottom_edge
        self.assertTrue(0 <= left and right <= 800 and 0 <= top and bottom <= 480, window.frame())
        self.assertAlmostEqual(width / height, 618 / 447, delta=0.02)
        self.assertGreater(height, 380)
        window.press("PROGRAMMA")
        with window.covered():
            window.await_status(SUCCESS)
            eventually(window.calls_for_attention, "the call for attention")
        window.press("PROGRAMMA")
        eventually(window.bar, "the bar")
        self.close(window, self.file)

    @unittest.skipIf(WEB, "a scenario is dropped on the page")
    def test_says_what_it_can_not_do_with_a_scenario(self):
        file = self.programme(length=8)
        for simulate in ("missing.json", self.scenario(remote={"version": 300}), ".", "x" * 5000):
            window = self.open(file, simulate=simulate)
            self.assertRegex("\n".join(window.box()), f"(?m)^{re.escape(simulate)}: ")
            window.answer()
            self.assertEqual(window.ends(), 1)
        place = self.folder / "place"
        for leave in (Window.answer, Window.end_session) if QT else (Window.answer,):
            place.mkdir()
            file = self.programme(length=8)
            window = self.open(file, simulate=self.scenario(image="place/image.json"))
            window.press("PROGRAMMA")
            window.await_status(SUCCESS)
            place.rmdir()
            window.press("CHIUDI")
            self.assertIn("Il contenuto del telecomando simulato non è stato salvato", window.box())
            leave(window)
            self.assert_ends(window, file, status=1)


if __name__ == "__main__":
    if WINDOWS:
        from win32 import SC_HOLD_CAPTION, SC_KEYMENU, Window, native, screen
    elif WEB:
        from web import Window, native
    else:
        from harness import Desktop, Window, inside_a_desktop, native, screen

        inside_a_desktop()
    common.Case.window, common.Case.program = Window, os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
