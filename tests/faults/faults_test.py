"""What becomes of ventoctl where the machine fails it: one call of the system after the other fails, alone and with all
behind it, and one allocation after the other. Whatever fails, the status is a documented one, a sentence says what and
why, and every file is either what it was or whole."""

import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "console"))
from ventoctl import COMMAND, PLAIN_ENVIRONMENT, programme

CALLS = ",".join("posix/io/" + name for name in (
    "oc/open", "oc/close", "sync/fsync", "rw/read", "rw/readv", "rw/write", "rw/writev", "dir/rename", "dir/unlink",
    "net/poll", *("own/" + name for name in (
        "stat", "lstat", "fstat", "access", "faccessat", "fchmod", "fchown", "flock", "getdents64", "readlink", "lseek",
        "realpath")))) + ",posix/stdio/oc/fopen"  # fmt: skip
STREAMS = "posix/stdio/rw/fwrite,posix/stdio/fflush"
SHORT = ",".join(f"posix/io/rw/{name}/reduce" for name in ("read", "readv", "write", "writev"))
MEMORY = "libc/mm/malloc,libc/mm/calloc,libc/mm/realloc"
STATUSES = {0, 1, *range(2, 22), 65, 66, 70, 73}
# The codec has one text of its own for whatever keeps it from a file, and std::filesystem::equivalent one reason.
REASONS = ("Errore di lettura o scrittura", "Il file di partenza non esiste", "Il file o la cartella non esiste")

PROGRAMME = programme(10)
FILES = {
    "a.qlb": PROGRAMME, "b.qlb": PROGRAMME.replace("ALFA", "ALTRA"), "key.json": json.dumps([[17, 4]] * 12),
    "text": "abracadabra " * 20,
    "scenario.json": json.dumps({"reportMicroseconds": 0, "image": "image.json"}),
}  # fmt: skip


class Case:
    """A command line, and the files that it may change."""

    def __init__(self, *arguments, changes=(), before=None):
        self.arguments, self.changes, self.before = arguments, changes, before or {}


ON_LINK = ("--simulate=scenario.json", "--trace", "trace")
CASES = [
    Case("program", "a.qlb", *ON_LINK, "--log", "log", "--verify", changes=("image.json", "trace", "log")),
    Case("program", "a.qlb", "--simulate=scenario.json", "--consume", changes=("image.json", "a.qlb")),
    Case("program", "a.qlb", "--simulate=scenario.json", "--trace", "a.qlb"),
    Case("verify", "a.qlb", *ON_LINK, "--log", "log", "--json", changes=("image.json", "trace", "log")),
    Case("plan", "a.qlb", *ON_LINK, changes=("image.json", "trace")),
    Case("read", *ON_LINK, "--json", changes=("image.json", "trace")),
    Case("read", "--simulate=recorded", before={"recorded": ("read", "--simulate", "--trace", "recorded")}),
    Case("check", "a.qlb", "b.qlb", "--json"),
    Case("devices", "--json"),
    Case("explain", "recorded", before={"recorded": ("read", "--simulate", "--trace", "recorded")}),
    Case("convert", "a.qlb", "dest", "-f", changes=("dest",)),
    Case("convert", "a.json", "dest", "-f", changes=("dest",), before={"a.json": ("convert", "a.qlb", "a.json")}),
    Case("diff", "a.qlb", "b.qlb"),
    Case("encode", "text", "dest", "-f", "--key", "key.json", changes=("dest",)),
    Case("encode", "text", "text", changes=("text",)),
    Case("decode", "he3", "dest", "-f", changes=("dest",), before={"he3": ("encode", "text", "he3")}),
    Case("info", "he3", before={"he3": ("encode", "text", "he3")}),
    Case("completion", "bash"),
    Case("help", "program"),
    Case("version", "--json"),
    Case("version", "--trace"),
]  # fmt: skip


def steady(content):
    """Without what is different in each run: times, and the order of a folder."""
    return re.sub(r'("(seconds|time)": ?)("[^"]*"|[\d.e+-]+)', r"\1null", content.decode(errors="replace"))


class Run:
    """`failing`: what fails, by the names of the library's settings."""

    def __init__(self, case, template, **failing):
        self.case = case
        settings = {"FAILING_" + name.upper(): str(value) for name, value in failing.items()}
        with tempfile.TemporaryDirectory(prefix="faults-") as folder:
            shutil.copytree(template, folder, dirs_exist_ok=True)
            done = subprocess.run(
                [*COMMAND, *case.arguments, "--language", "it"], cwd=folder, timeout=60, check=False,
                env=PLAIN_ENVIRONMENT | settings | ({"LD_PRELOAD": os.environ["FAILING_CALLS"]} if failing else {}),
                stdin=subprocess.DEVNULL, capture_output=True,
            )  # fmt: skip
            self.status, self.error = done.returncode, done.stderr.decode(errors="replace")
            self.output = steady(done.stdout)
            self.files = {entry.name: steady(entry.read_bytes()) for entry in pathlib.Path(folder).iterdir()}


class Faults(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = pathlib.Path(tempfile.mkdtemp(prefix="faults-"))
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        cls.pool = concurrent.futures.ThreadPoolExecutor(os.cpu_count())

    def prepare(self, case):
        template = self.scratch / str(CASES.index(case))
        if not template.exists():
            template.mkdir()
            for name, content in FILES.items():
                (template / name).write_bytes(content.encode("cp1252"))
            subprocess.run([*COMMAND, "program", "b.qlb", "--simulate=scenario.json"], cwd=template, check=True, capture_output=True)
            for name, command in case.before.items():
                subprocess.run([*COMMAND, *command], cwd=template, check=True, capture_output=True)
            for name in {"trace", "log", "dest"} & set(case.changes):
                (template / name).write_text('{"old": 1}\n')
        return template, Run(case, template)

    def wrong_files(self, run, before, good):
        for name in sorted(before.files.keys() | run.files.keys()):
            is_now, was, whole = (each.files.get(name) for each in (run, before, good))
            if is_now in (was, whole):
                # A programme file that can't be deleted stays, and that is told.
                if run.status == good.status and is_now != whole and f"{name} non è stato eliminato" not in run.error:
                    yield f"{name} is not whole"
            elif name in ("trace", "log") and is_now is not None:
                kept = name == "trace" or (is_now.startswith(was) and is_now.count("\n") == 2)
                if not kept or is_now[-1:] not in ("", "\n") or not all(map(json.loads, is_now.splitlines())):
                    yield f"{name}: {is_now[-300:]}"
            else:
                yield f"{name}: {is_now and is_now[:200]}"

    def problems(self, run, before, good, points):
        # libgcrypt aborts where it has no memory to begin with, or the kernel doesn't tell whether its FIPS mode is on.
        if run.status == -6 and "--log" in run.case.arguments and re.search("in libgcrypt: |^Fatal error: Cannot", run.error, re.M):
            return
        if run.status not in STATUSES and run.status != good.status:
            yield "not a documented status"
        if run.status == good.status and run.output != good.output:
            yield "other results"
        if run.status != good.status and points != STREAMS:
            if not run.error.startswith("ventoctl: ") and "\nventoctl: " not in run.error:
                yield "no sentence"
            elif points == MEMORY and re.search("[Ll]a memoria non basta|^ventoctl: There is not enough memory", run.error):
                if run.status != 70:
                    yield "not the status of what is unforeseen"
            elif not any(reason in run.error for reason in REASONS):
                yield "no reason"
            elif run.status in (65, 66, 73) and not any(name in run.error for name in before.files):
                yield "no file"
        if "--json" in run.case.arguments and run.output:
            json.loads(run.output)
        yield from self.wrong_files(run, before, good)

    def try_all(self, points, calls_of=lambda names: range(1, len(names) + 1), behind=1):
        """`behind`: of how many calls one fails with all behind it too; 0 for none."""
        found, count, record = [], 0, self.scratch / "record"
        for case in CASES:
            template, good = self.prepare(case)
            before = Run(Case("version"), template)
            Run(case, template, points=points, call=0, record=record)
            names = record.read_text().splitlines()
            calls = list(calls_of(names))
            runs = [{"call": call} for call in calls] + [{"call": call, "all": 1} for call in (calls[::behind] if behind else [])]
            for which, run in zip(runs, self.pool.map(lambda each: Run(case, template, points=points, **each), runs)):
                count += 1
                problems = list(self.problems(run, before, good, points))
                if problems:
                    name = names[which["call"] - 1] if points != MEMORY else "of memory"
                    found.append(f"{' '.join(case.arguments)}: {which} {name}: {problems}, status {run.status}\n  {run.error}")
        print(count, "runs", file=sys.stderr)
        self.assertGreater(count, 500, "the calls were not counted")
        self.assertFalse(found, "\n".join(found))

    def test_calls_that_fail(self):
        self.try_all(CALLS)

    def test_streams_that_fail(self):
        self.try_all(STREAMS)

    def test_transfers_that_are_short(self):
        self.try_all(SHORT, behind=0)

    # Those that many places make alike fail in one of them. Before the program begins it speaks the desktop's language.
    def test_allocations_that_fail(self):
        seen = set()

        def new(names):
            for line in names:
                call, place = line.split()
                if place not in seen:
                    seen.add(place)
                    yield int(call)

        self.try_all(MEMORY, new, behind=4)


if __name__ == "__main__":
    unittest.main(verbosity=2)
