"""Drives the page in Chromium, over its DevTools pipe: no port, no socket, no package."""

import atexit
import base64
import collections
import contextlib
import functools
import http.server
import json
import os
import pathlib
import select
import shutil
import subprocess
import sys
import tempfile
import threading
import time

import common
from common import eventually

KEYS = {"Tab": (9, ""), "Return": (13, "\r"), "Escape": (27, ""), "space": (32, " "), "F1": (112, "")}
CAPTIONS = {"list": "list", "progress bar": "progressbar"}


def native(path):
    return pathlib.Path(path).name


class Browser:
    """Chromium, of itself without a window. What a page tells of its own accord is in `events`."""

    EXECUTABLE, PREFIX, OPTIONS = "chromium", (), ("--headless=new",)

    def __init__(self):
        executable = shutil.which(self.EXECUTABLE)
        if not executable:
            print("skipped: no chromium")
            sys.exit(1 if os.environ.get("VENTO_SKIP_NOTHING") else 77)
        self.profile = tempfile.mkdtemp(prefix="chromium.")
        os.chmod(self.profile, 0o777)
        from_browser, their_out = os.pipe()
        their_in, to_browser = os.pipe()

        def descriptors():  # the browser reads 3 and writes 4
            ours = os.dup(their_in), os.dup(their_out)
            os.dup2(ours[0], 3), os.dup2(ours[1], 4)
        # No experiments, and none of the browser's own pages, which cost more than ours.
        command = [*self.PREFIX, executable, *self.OPTIONS, "--no-sandbox", "--disable-gpu", "--no-first-run", "--remote-debugging-pipe",
                   "--disable-field-trial-config", "--disable-features=PreloadTopChromeWebUI", "--disable-dev-shm-usage",
                   f"--user-data-dir={self.profile}", "about:blank"]
        self.process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, close_fds=False,
                                        preexec_fn=descriptors, env=os.environ | {"HOME": self.profile})
        os.close(their_out), os.close(their_in)
        for each in (from_browser, to_browser):
            os.set_inheritable(each, False)
        self.read, self.write, self.buffer, self.number = from_browser, to_browser, b"", 0
        self.events = collections.defaultdict(list)

    def message(self, seconds):
        while b"\0" not in self.buffer:
            if not select.select([self.read], [], [], seconds)[0]:
                raise AssertionError(f"nothing from the browser in {seconds} s")
            piece = os.read(self.read, 1 << 20)
            if not piece:
                raise EOFError("the browser has ended")
            self.buffer += piece
        raw, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(raw)

    def call(self, method, session=None, seconds=60 * common.PATIENCE, **parameters):
        self.number += 1
        given = {name: value for name, value in parameters.items() if value is not None}
        request = {"id": self.number, "method": method, "params": given} | ({"sessionId": session} if session else {})
        os.write(self.write, json.dumps(request).encode() + b"\0")
        while True:
            answer = self.message(seconds)
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            if "method" in answer:
                self.events[answer.get("sessionId")].append(answer)

    def first_tab(self):
        return next(each["targetId"] for each in self.call("Target.getTargets")["targetInfos"] if each["type"] == "page")

    def close(self):
        with contextlib.suppress(EOFError, BrokenPipeError, RuntimeError, AssertionError):
            self.call("Browser.close", seconds=20)
        try:
            self.process.wait(timeout=20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.profile, ignore_errors=True)


@functools.cache
def browser():
    """The one that all windows are tabs of."""
    started = Browser()
    atexit.register(started.close)
    return started


def serve(folder):
    """A server of a folder to this machine alone."""
    class Quiet(http.server.SimpleHTTPRequestHandler):
        def log_message(self, *_):
            pass
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Quiet, directory=folder))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server


def address_of(server):
    return f"http://127.0.0.1:{server.server_address[1]}"


@functools.cache
def site(folder):
    return address_of(serve(folder))


class Window(common.Window):
    """A tab, with storage and locks of its own unless it is one that is open. Files come to it by being dropped."""

    SCALES = (1, 2)
    opened = []

    def __init__(self, page, folder, *arguments, language="it", simulate="1", scale=1, size=(900, 700), before="", query=None,
                 context=None, address=None, tab=None):
        self.folder, self.scale, self.page = pathlib.Path(folder), scale, pathlib.Path(page)
        self.kept = tab is not None
        self.context = context if context or tab else browser().call("Target.createBrowserContext")["browserContextId"]
        target = tab or browser().call("Target.createTarget", url="about:blank", browserContextId=self.context)["targetId"]
        self.target = target
        self.session = browser().call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")
        self.call("Emulation.setUserAgentOverride", userAgent=self.evaluate("navigator.userAgent"), acceptLanguage=language)
        self.resize(*size)
        self.call("Page.addScriptToEvaluateOnNewDocument", source=before + NOTING)
        self.address = address or f"{site(str(self.page.parent))}/{self.page.name}"
        self.go(("?simulate" if simulate else "") if query is None else query)
        for file in ([simulate] if simulate not in ("", "1") else []) + ([" ".join(map(str, arguments))] if arguments else []):
            self.drop(self.folder / file)
        if arguments:
            opened = f"document.getElementById('Command4').title.includes({json.dumps(' '.join(map(native, arguments)))})"
            eventually(lambda: self.evaluate(opened) or self.shows_a_dialog(), "the file, or why not")
        self.key("Tab")
        Window.opened.append(self)

    def __exit__(self, *failure):
        if self.kept:
            return browser().call("Target.detachFromTarget", sessionId=self.session)
        for method, what in (("Target.closeTarget", {"targetId": self.target}),
                             ("Target.disposeBrowserContext", {"browserContextId": self.context})):
            with contextlib.suppress(RuntimeError):  # it may have gone with another window of its context
                browser().call(method, **what)

    def go(self, query):
        self.call("Page.navigate", url=self.address + query)
        eventually(lambda: self.evaluate("document.readyState === 'complete' && !document.getElementById('broken')?.checkVisibility()"
                                         " && document.getElementById('Command3').textContent !== ''"), "the page")

    def call(self, method, **parameters):
        return browser().call(method, self.session, **parameters)

    def evaluate(self, expression, gesture=False):
        answer = self.call("Runtime.evaluate", expression=expression, awaitPromise=True, returnByValue=True, userGesture=gesture)
        if "exceptionDetails" in answer:
            raise RuntimeError(json.dumps(answer["exceptionDetails"])[:1500])
        return answer["result"].get("value")

    def resize(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=self.scale, mobile=False)

    def told(self, method):
        """What the page has told by this event, so far."""
        browser().call("Browser.getVersion")
        return [each["params"] for each in browser().events[self.session] if each.get("method") == method]

    def told_now(self, method):
        """The same, while the page does not answer."""
        with contextlib.suppress(AssertionError):
            while True:
                answer = browser().message(0.2)
                browser().events[answer.get("sessionId")].append(answer)
        return [each for each in browser().events[self.session] if each.get("method") == method]

    # What a screen reader finds.

    def tree(self):
        nodes = self.call("Accessibility.getFullAXTree")["nodes"]
        value = lambda node, what: node.get(what, {}).get("value", "")
        return [(value(node, "role"), value(node, "name"), value(node, "description"), node.get("backendDOMNodeId"),
                 {each["name"]: each["value"].get("value") for each in node.get("properties", [])})
                for node in nodes if not node["ignored"]]

    def one(self, role, name):
        return eventually(lambda: [node for node in self.tree() if node[:2] == (role, name)], f"a {role} {name}")[0]

    def names(self, role):
        return [name for each, name, *_ in self.tree() if each == CAPTIONS.get(role, role)]

    def descriptions(self, role):
        return [text for each, _, text, *_ in self.tree() if each == CAPTIONS.get(role, role)]

    def description(self, name):
        return self.one("button", name)[2]

    def buttons(self):
        return self.evaluate("[...document.querySelectorAll('#form button')].filter(b => b.checkVisibility()).map(b => b.textContent)")

    def answer(self):
        super().answer()
        self.evaluate("new Promise(done => requestAnimationFrame(() => setTimeout(done)))")  # it is told in a turn of its own

    def press(self, name):
        """By the mouse, wherever it has to be scrolled to."""
        node = self.one("button", name)[3]
        with contextlib.suppress(RuntimeError):
            self.call("DOM.scrollIntoViewIfNeeded", backendNodeId=node)
        x1, y1, _, _, x2, y2, *_ = self.call("DOM.getContentQuads", backendNodeId=node)["quads"][0]
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=(x1 + x2) / 2, y=(y1 + y2) / 2, button="left", clickCount=1)

    def enabled(self, name):
        return not self.one("button", name)[4].get("disabled", False)

    def focus(self):
        return self.evaluate("(e => e.getAttribute('aria-label') ?? e.textContent)(document.activeElement)")

    # What the page shows.

    def text(self, element):
        return self.evaluate(f"(e => e?.checkVisibility() ? e.innerText.trim() : '')(document.getElementById('{element}'))")

    def status(self):
        return self.evaluate("document.getElementById('Label1').textContent")

    def items(self):
        return self.evaluate("[...document.querySelectorAll('#form ul')].map(u => [...u.children].map(i => i.textContent))")

    def bar(self):
        return self.evaluate("(b => b.hidden ? null : [b.value, b.max])(document.getElementById('ProgressBar1'))")

    def frame(self):
        left, top, width, height = [self.scale * each for each in self.box_of("form")]
        width, height = width - 2 * self.scale, height - 2 * self.scale  # without its border
        return self.evaluate("document.title"), [left, top, left + width, top + height], [width, height]

    def box_of(self, element):
        """Left, top, width and height in pixels of the page."""
        return self.evaluate(f"(r => [r.x, r.y, r.width, r.height])(document.getElementById('{element}').getBoundingClientRect())")

    def places(self):
        left, top = (each + 1 for each in self.box_of("form")[:2])  # within its border
        ids = ("Image1", "Label1", "Command2", "Command3", "Command4", "Command6_0", "ListView1_0", "ListView1_1", "ListView1_2")

        def place(id):
            x, y, width, height = self.box_of(id)
            return [round(self.scale * each) for each in (x - left, y - top, x - left + width, y - top + height)]
        names = self.evaluate("Object.fromEntries([...document.querySelectorAll('#form .control')].map("
                              "e => [e.id, e.getAttribute('aria-label') ?? e.textContent]))")
        return {names[id]: place(id) for id in ids}

    def shows_a_dialog(self):
        return self.evaluate("document.getElementById('box').open")

    def box(self):
        eventually(self.shows_a_dialog, "the box")
        return [self.text("boxText"), self.text("boxDetail")]

    @contextlib.contextmanager
    def spoken(self):
        """What a live region has said and the bar has shown."""
        assert self.one("status", "Stato")[4]["live"] == "polite"
        Window.opened = [self]
        yield lambda: [each for window in Window.opened for each in window.evaluate("window.spoken ?? []")]

    # What the operator does.

    def key(self, chord):
        *alt, name = chord.split("+")
        code, text = KEYS.get(name) or (ord(name.upper()), "" if alt else name)
        key = {"Return": "Enter", "space": " "}.get(name, name)
        parameters = {"key": key, "code": {"space": "Space"}.get(name, f"Key{key.upper()}" if len(key) == 1 else key),
                      "windowsVirtualKeyCode": code, "modifiers": 1 if alt else 0}
        while True:
            self.call("Input.dispatchKeyEvent", type="keyDown", **parameters, **({"text": text} if text else {}))
            self.call("Input.dispatchKeyEvent", type="keyUp", **parameters)
            if name != "Tab" or self.evaluate("!!document.activeElement.closest('#form, #box')"):
                return  # what the page has beside the form a window has not

    def drop(self, *paths):
        """Whether it was taken."""
        x, y, *_ = self.box_of("form")
        data = {"items": [], "files": list(map(str, paths)), "dragOperationsMask": 1}
        before = self.evaluate("document.getElementById('box').open")
        for kind in ("dragEnter", "dragOver", "drop"):
            self.call("Input.dispatchDragEvent", type=kind, x=x + 20, y=y + 20, data=data)
        self.evaluate("new Promise(done => setTimeout(done, 100))")
        if not before and self.shows_a_dialog() and "(.json)" in self.text("boxText"):
            self.answer()
            return False
        return True

    def saved(self, caption):
        """What a button saves."""
        place = self.folder / "saved"
        for each in place.glob("*"):
            each.unlink()
        browser().call("Browser.setDownloadBehavior", behavior="allow", downloadPath=str(place), browserContextId=self.context)
        self.press(caption)
        whole = (".rules", ".jsonl")  # under another name until then
        return eventually(lambda: [each.read_text() for each in place.glob("*") if each.suffix in whole], "what is saved")[0]

    def close(self):
        self.press({"it": "CHIUDI", "en": "CLOSE"}[self.evaluate("document.documentElement.lang")])

    end_session = close

    def ends(self, seconds=10):
        eventually(lambda: self.text("endTitle"), "the end", seconds)
        return 0

    def keeps(self, file):
        """The page can't delete a file by itself; it says what it wants to do."""
        return file.name not in self.text("fate")

    def picture(self, name):
        if folder := os.environ.get("VENTO_PICTURES"):
            time.sleep(0.1)
            png = self.call("Page.captureScreenshot", format="png")["data"]
            pathlib.Path(folder, f"web-{name}.png").write_bytes(base64.b64decode(png))


# Notes what a live region says: a screen reader speaks of its own accord what changes in one.
NOTING = """
addEventListener("DOMContentLoaded", () => {
    const [label, bar] = ["Label1", "ProgressBar1"].map(id => document.getElementById(id));
    const latest = {};
    new MutationObserver(() => {
        const percent = bar.hidden || !bar.max ? "" : Math.floor(100 * bar.value / bar.max);
        for (const [what, now] of Object.entries({label: label.textContent, bar: percent})) {
            if (now !== "" && now !== latest[what]) (window.spoken ??= []).push(now);
            latest[what] = now;
        }
    }).observe(document, {subtree: true, childList: true, characterData: true, attributes: true});
});
"""
