#!/usr/bin/python3
"""screenshots.py VENTO PROGRAMME FOLDER: pictures of the window before, during and after a run, in both languages
and at two scales, and of what comes up over it. Needs ImageMagick."""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

import harness

CAPTIONS = {"it": ("PROGRAMMA", "Leggi Programmazione", "APRI"), "en": ("PROGRAM", "CODE READING", "OPEN")}


def picture(window, path):
    time.sleep(0.2)  # for what has just changed to be painted
    top = window.windows()[-1]
    subprocess.run(["import", "-window", hex(top.id), "-strip", path], check=True)


def pictures(vento, programme, folder, language, scale):
    program, read, choose = CAPTIONS[language]
    locale = {"it": "it_IT.UTF-8", "en": "en_GB.UTF-8"}[language]
    with tempfile.TemporaryDirectory() as place:
        scenario = pathlib.Path(place, "scenario.json")
        file = shutil.copy(programme, place)
        name = f"{folder}/{language}-{scale}x-%s.png"
        for interfaces, shots in (([{"vendorId": 1240}], True), ([{"vendorId": 1240, "opens": False}], False)):
            scenario.write_text(json.dumps({"interfaces": interfaces, "reportMicroseconds": 8000,
                                            "remote": {"arrivesAtPoll": 60}}))
            with harness.Window(vento, place, file, language=locale, simulate=str(scenario), scale=scale) as window:
                if not shots:
                    window.press(read)
                    window.one("push button", "OK")
                    picture(window, name % "box")
                    continue
                picture(window, name % "before")
                window.press(program)
                harness.eventually(lambda: len(window.status()) > 20, "the waiting text")
                picture(window, name % "waiting")
                harness.eventually(lambda: (bar := window.bar()) and bar[0] > bar[1] * 0.4, "the bar", 60)
                picture(window, name % "during")
                harness.eventually(lambda: len(window.status()) > 20, "the end", 60)
                picture(window, name % "after")
                window.press(read)
                window.await_status("TV ", 60)
                picture(window, name % "read")
                window.press(choose)
                window.one("dialog")
                picture(window, name % "dialog")


if __name__ == "__main__":
    harness.inside_a_desktop()
    vento, programme, folder = map(os.path.abspath, sys.argv[1:])
    os.makedirs(folder, exist_ok=True)
    for each in CAPTIONS:
        for factor in (1, 2):
            pictures(vento, programme, folder, each, factor)
