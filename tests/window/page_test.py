#!/usr/bin/python3
"""page_test.py VENTO.HTML: what the page has beside what every window has, in Chromium."""

import json
import os
import pathlib
import sys
import unittest

import common
from common import LABELS, eventually
from web import Window, address_of, browser, serve

ROOT = pathlib.Path(__file__).parents[2]
AXE = ROOT / "build/npm/node_modules/axe-core/axe.min.js"
SUCCESS, WAITING = "Programmazione eseguita con successo", "Posizionare il telecomando"

# A transmitter that the browser knows of, as far as a page can tell: `offered` is what the operator chooses at the prompt,
# `refusal` why it can't be opened.
HID = """
const device = Object.assign(new EventTarget(), {vendorId: 1240, productId: 1, opened: false,
    collections: [{usagePage: 0xff00, usage: 1, inputReports: [], outputReports: []}],
    async open() { if (window.refusal) throw new DOMException("no", window.refusal); this.opened = true; },
    async close() { this.opened = false; },
    sendReport: () => new Promise(() => {})});
let granted = [];
const hid = Object.assign(new EventTarget(), {getDevices: async () => granted, async requestDevice(asked) {
    window.asked = asked;
    return granted = window.offered ? [device] : [];
}});
window.plug = on => {
    granted = on ? [device] : [];
    hid.dispatchEvent(Object.assign(new Event(on ? "connect" : "disconnect"), {device}));
};
Object.defineProperty(Navigator.prototype, "hid", {get: () => hid});
"""
# The locks on the screen, and timers that come no more in a tab that nobody sees, where a browser delays them.
LOCKS = """
const request = navigator.wakeLock.request.bind(navigator.wakeLock), timer = window.setTimeout;
window.locks = [];
navigator.wakeLock.request = kind => request(kind).then(lock => (locks.push(lock), lock));
window.setTimeout = (call, time) => document.hidden ? 0 : timer(call, time);
"""
# A file of the browser's own in the place of the computer's: no test can answer the browser's dialogs.
PICKER = """
window.showOpenFilePicker = async () => {
    const folder = await navigator.storage.getDirectory();
    const file = await folder.getFileHandle("VENTO-scelto.qlb", {create: true});
    const stream = await file.createWritable();
    await stream.write(window.chosen ?? "1;a;1\\n");
    await stream.close();
    return [file];
};
window.files = async () => (await Array.fromAsync((await navigator.storage.getDirectory()).keys())).join();
"""


class PageTest(common.Case):
    def real(self, more="", **options):
        """With a transmitter that is mocked."""
        return self.open(simulate="", before=HID + more, **options)

    def assert_accessible(self, window, what):
        violations = "axe.run().then(r => r.violations.map(v => [v.id, v.nodes.map(n => n.html)]))"
        window.evaluate(AXE.read_text() + ";0")
        self.assertEqual(window.evaluate(violations), [], what)
        window.picture(what)

    def test_every_state_is_accessible_wide_and_narrow_and_in_forced_colours(self):
        for width, forced, language in ((900, "none", "it"), (320, "none", "en"), (900, "active", "en"), (320, "active", "it")):
            name = f"{width}-{'forced' if forced == 'active' else 'plain'}"
            window = self.open(size=(width, 760), language=language)
            window.call("Emulation.setEmulatedMedia", features=[{"name": "forced-colors", "value": forced}])
            self.assert_accessible(window, f"{name}-start")
            window.drop(self.folder / self.scenario(remote={"arrivesAtPoll": 300}, faults=[{"cycle": 400, "kind": "readFails"}]))
            window.drop(self.programme())
            program, close = {"it": ("PROGRAMMA", "CHIUDI"), "en": ("PROGRAM", "CLOSE")}[language]
            window.press(program)
            eventually(lambda: window.buttons()[0].startswith("Esc"), "the wait")
            self.assert_accessible(window, f"{name}-waiting")
            eventually(window.bar, "the bar")
            self.assert_accessible(window, f"{name}-bar")
            eventually(lambda: window.shows_a_dialog() or window.text("hint").startswith("F1"), "the end")
            if not window.shows_a_dialog():
                window.key("F1")
            window.box()
            self.assert_accessible(window, f"{name}-box")
            window.answer()
            self.assert_accessible(window, f"{name}-end")
            self.assertLessEqual(window.evaluate("document.documentElement.scrollWidth"), width)
            window.press(close)
            window.ends()
            self.assert_accessible(window, f"{name}-closed")
        window = self.real(size=(320, 760))
        window.evaluate("window.offered = true, window.refusal = 'NotAllowedError'")
        window.press("Leggi Programmazione")
        window.answer()
        self.assertLessEqual(window.evaluate("document.documentElement.scrollWidth"), 320)
        self.assert_accessible(window, "320-forbidden")

    def test_no_control_covers_another_in_a_narrow_window(self):
        for width in (320, 360, 635):
            window = self.open(self.programme(), size=(width, 760))
            window.evaluate("document.getElementById('ProgressBar1').hidden = false")
            ids = window.evaluate("[...document.querySelectorAll('#form .control')].filter(e => e.checkVisibility()).map(e => e.id)")
            places = {id: window.box_of(id) for id in ids}
            self.assertEqual(len(places), 11, ids)
            for id, (left, top, wide, high) in places.items():
                self.assertTrue(left >= 0 and left + wide <= width, (id, width))
                for other, (x, y, w, h) in places.items():
                    apart = id == other or x >= left + wide or left >= x + w or y >= top + high or top >= y + h
                    self.assertTrue(apart, (id, other, width))

    def test_asks_for_a_transmitter_and_says_what_became_of_it(self):
        window = self.real()
        self.assertIn("non ancora scelto", window.text("linkText"))
        for caption in ("Leggi Programmazione", "COLLEGA"):
            window.press(caption)
            self.assertEqual(window.box()[0], "Nessun trasmettitore scelto")
            window.answer()
        vendors = [each["vendorId"] for each in window.evaluate("window.asked.filters")]
        self.assertEqual(vendors, [1240, 11025])
        window.evaluate("window.offered = true")
        window.press("COLLEGA")
        eventually(lambda: window.text("linkText") == "Trasmettitore: collegato", "the transmitter")
        self.assertIn("Trasmettitore: collegato", window.description("Leggi Programmazione"))
        window.evaluate("plug(false)")
        self.assertIn("scollegato", window.text("linkText"))
        window.evaluate("plug(true)")
        self.assertEqual(window.text("linkText"), "Trasmettitore: collegato")
        window.evaluate("window.refusal = 'NetworkError'")
        window.press("Leggi Programmazione")
        self.assertIn("non è stato possibile aprirlo", window.box()[1])
        window.answer()

    def test_hands_out_what_linux_wants_for_a_transmitter_that_may_not_be_opened(self):
        window = self.real()
        window.evaluate("window.offered = true, window.refusal = 'NotAllowedError'")
        window.press("Leggi Programmazione")
        self.assertEqual(window.box()[0], "Programmatore non collegato")
        window.picture("forbidden-box")
        window.answer()
        commands = eventually(
            lambda: window.evaluate("[...document.querySelectorAll('#steps code')].map(c => c.textContent)"), "the commands")
        self.assertEqual([command.split()[:2] for command in commands], [["sudo", "install"], ["sudo", "sh"], ["sudo", "usermod"]])
        self.assertIn("permesso", window.text("steps"))
        window.picture("forbidden")
        rule = window.saved("Salva 60-vento.rules")
        self.assertEqual(rule, (ROOT / "packaging/linux/60-vento.rules").read_text())
        window.evaluate("window.refusal = ''")
        window.press("Leggi Programmazione")
        eventually(lambda: not window.text("steps"), "the end of the help")

    def test_one_page_at_a_time_works_with_a_transmitter(self):
        first = self.real()
        second = self.real(context=first.context)
        for window in (first, second):
            window.evaluate("window.offered = true")
        first.press("Leggi Programmazione")
        first.await_status(WAITING)
        second.press("Leggi Programmazione")
        self.assertIn("un altro VENTO lo sta usando", second.box()[1])
        second.answer()
        eventually(lambda: "in uso" in second.text("linkText"), "that it is in use")
        first.key("Escape")
        first.await_status("annullata")
        eventually(lambda: second.press("Leggi Programmazione") or WAITING in second.status(), "its turn")

    def test_shows_the_simulation_in_browsers_that_can_not_reach_a_transmitter(self):
        for lacking in ("delete Navigator.prototype.hid;", "delete WebAssembly.Suspending;"):
            window = self.open(simulate="", before=lacking)
            self.assertIn("Chromium 137", window.text("linkText"))
            self.assertNotIn("COLLEGA", window.names("button"))
            window.press("Apri il programma di esempio")
            eventually(lambda: "PROGRAMMA" in window.buttons(), "the example")
            window.press("PROGRAMMA")
            window.await_status(SUCCESS)
            window.press("Leggi Programmazione")
            window.await_status("TV CITTA 1B")
            window.drop(self.folder / self.scenario(interfaces=[]))
            window.press("Leggi Programmazione")
            self.assertIn("Programmatore non collegato", window.box())
            window.answer()
            window.close()
            window.ends()
            self.assertEqual(window.text("fate"), "")  # the example is nobody's file

    def test_opens_a_chosen_file_and_deletes_it_where_the_operator_agrees(self):
        for answer, left in (("Conserva", "VENTO-scelto.qlb"), ("Elimina", "")):
            window = self.open(before=PICKER)
            window.press("APRI")
            self.assertIn("Riga 1, campo 4", window.box()[0])
            window.answer()
            good = self.programme().read_text(encoding="windows-1252").replace("à", "a").replace("\n", "\\n")
            window.evaluate(f"window.chosen = '{good}'")
            window.press("APRI")
            eventually(lambda: window.items()[2] == LABELS[2], "the labels")
            window.close()
            window.ends()
            self.assertIn("VENTO-scelto.qlb", window.text("fate"))
            window.picture("question")
            window.press(answer)
            eventually(lambda: window.text("fate").startswith("Il file"), "the answer")
            self.assertEqual(window.evaluate("files()"), left)
            window.press("Apri di nuovo")
            eventually(lambda: "APRI" in window.buttons(), "the page anew")

    def test_the_site_can_be_installed_opens_what_it_is_launched_with_and_works_without_a_network(self):
        server = serve(str(pathlib.Path(self.program).parent / "site"))
        launch = "Object.defineProperty(window, 'launchQueue', {value: {setConsumer: call => window.launch = call}});"
        window = self.open(address=address_of(server) + "/", before=PICKER + launch)
        manifest = window.call("Page.getAppManifest")
        self.assertEqual(manifest["errors"], [])
        accepted = json.loads(manifest["data"])["file_handlers"][0]["accept"]
        self.assertEqual(list(accepted.values()), [[".qlb"]])
        obstacles = {each["errorId"] for each in window.call("Page.getInstallabilityErrors")["installabilityErrors"]}
        self.assertLessEqual(obstacles, {"in-incognito"})  # as all storage of a test's own is
        window.evaluate("void showOpenFilePicker().then(files => launch({files}))")
        self.assertIn("Riga 1, campo 4", window.box()[0])
        window.answer()
        window.evaluate("navigator.serviceWorker.ready.then(() => 0)")
        server.shutdown()
        server.server_close()
        for query in ("?simulate", ""):
            window.go(query)
        self.assertIn("non ancora scelto", window.text("linkText"))

    def test_forgets_a_file_that_it_can_not_delete(self):
        window = self.open(before="delete window.showOpenFilePicker;")
        window.call("Page.setInterceptFileChooserDialog", enabled=True)
        window.press("APRI")
        chooser = eventually(lambda: window.told("Page.fileChooserOpened"), "the chooser")[0]
        file = self.programme()
        window.call("DOM.setFileInputFiles", files=[str(file)], backendNodeId=chooser["backendNodeId"])
        eventually(lambda: window.items() == LABELS, "the labels")
        window.close()
        window.ends()
        self.assertIn("La pagina ha dimenticato il file VENTO-prova.qlb", window.text("fate"))
        self.assertTrue(file.exists())

    def test_asks_before_it_is_left_in_the_middle_of_an_operation(self):
        window = self.open_slowly()
        window.press("PROGRAMMA")
        eventually(window.bar, "the bar")
        left = browser().number + 1
        os.write(browser().write, json.dumps({"id": left, "sessionId": window.session, "method": "Page.reload"}).encode() + b"\0")
        eventually(lambda: window.told_now("Page.javascriptDialogOpening"), "the question")
        window.call("Page.handleJavaScriptDialog", accept=False)
        window.await_status(SUCCESS, 60)
        window.go("?simulate")
        self.assertEqual(len(window.told("Page.javascriptDialogOpening")), 1)

    def test_goes_on_behind_other_tabs_and_keeps_the_screen_awake_while_it_works(self):
        window = self.real(more=LOCKS)
        go_behind = lambda: browser().call("Target.createTarget", url="about:blank", browserContextId=window.context)
        await_locks = lambda *held: eventually(lambda: window.evaluate("locks.map(lock => !lock.released)") == list(held), held)
        window.evaluate("window.offered = true")
        window.press("Leggi Programmazione")
        window.await_status(WAITING)
        await_locks(True)
        go_behind()
        await_locks(False)  # by the browser
        window.call("Page.bringToFront")
        await_locks(False, True)
        window.key("Escape")
        window.await_status("annullata")
        await_locks(False, False)
        window = self.open_slowly(1000, options={"before": LOCKS})
        go_behind()
        window.evaluate("document.getElementById('Command6_0').click()")
        window.await_status(SUCCESS, 60)

    def test_tells_of_a_failure_in_the_script_and_can_be_used_afterwards(self):
        window = self.open_slowly()
        window.press("PROGRAMMA")
        eventually(window.bar, "the bar")
        window.evaluate("window.whole = MessageChannel, window.MessageChannel = class { constructor() { throw Error('guasto'); } }")
        self.assertRegex(" ".join(window.box()), "errore imprevisto guasto\n.*ricarica la pagina")
        self.assertIsNone(window.bar())
        window.evaluate("void (window.MessageChannel = window.whole)")
        window.answer()
        window.press("PROGRAMMA")
        window.await_status(SUCCESS, 60)

    def test_closing_ends_an_operation_at_once_and_a_scenario_is_told_what_is_wrong_with_it(self):
        window = self.open_slowly(remote=None)
        window.drop(self.folder / self.scenario(remote={"version": 300}))
        self.assertIn("scenario.json: ", window.box()[1])
        window.answer()
        for moment in ("wait", "transfer"):
            window = self.open_slowly(20000, remote={"arrivesAtPoll": 100000 if moment == "wait" else 1})
            window.press("PROGRAMMA")
            window.await_status(WAITING) if moment == "wait" else eventually(window.bar, "the bar")
            window.close()
            self.assert_ends(window, self.file)
            self.assertEqual(window.told("Runtime.exceptionThrown"), [])

    def test_saves_a_trace_and_speaks_the_language_that_was_chosen(self):
        window = self.open(self.programme(length=8), language="en")
        window.press("PROGRAM")
        window.await_status("succesfully completed")
        lines = [json.loads(line) for line in window.saved("Save the trace").splitlines()]
        self.assertEqual([lines[0]["event"], lines[0]["cycle"], lines[-1]["event"]], ["search", 1, "close"])
        self.assertTrue(all(len(each["report"]) == 130 for each in lines if each["event"] == "write"))
        window.evaluate("(s => { s.value = 'it'; s.dispatchEvent(new Event('change')); })(document.getElementById('language'))")
        self.assertEqual((window.buttons()[0], window.items()), ("Leggi Programmazione", LABELS))
        window.go("?simulate")
        self.assertEqual(window.buttons(), ["Leggi Programmazione", "CHIUDI", "APRI"])
        kept = window.evaluate("JSON.stringify(localStorage) + document.cookie + sessionStorage.length")
        self.assertEqual(kept, '{"language":"it"}0')
        loaded = {each["request"]["url"].split(":")[0] for each in window.told("Network.requestWillBeSent")}
        self.assertLessEqual(loaded, {"http", "blob", "data"})
        self.assertEqual(window.evaluate("fetch('https://example.org').then(() => 'let through', () => 'blocked')"), "blocked")
        self.assertIn("Content Security Policy", str(window.told("Log.entryAdded") + window.told("Runtime.consoleAPICalled")))


if __name__ == "__main__":
    common.Case.window, common.Case.program = Window, os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
