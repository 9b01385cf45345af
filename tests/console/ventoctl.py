"""What the tests of the console program share: a folder for each test, programmes, scenarios, and runs of the
program, whose command line the environment's VENTOCTL begins."""

import itertools
import json
import os
import pathlib
import shlex
import shutil
import subprocess
import tempfile
import unittest

COMMAND = shlex.split(os.environ["VENTOCTL"])
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
WAITING = "Posizionare il telecomando di fronte al trasmettitore entro 1 minuto. Sincronizzazione in corso"
PLAIN_ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8", "TERM": "xterm", "NO_COLOR": ""}


def code_list(name, size):
    """A code list of `size` bytes whose section reads back as `name`."""
    codes = [ord(character) + 128 for character in name.ljust(8)]
    return ",".join(map(str, (codes + [index * 7 % 256 for index in range(size)])[:size]))


def programme(size=300):
    """A whole programme, three columns with lists A and B of `size` bytes each."""
    lines = itertools.product(enumerate(("ALFA", "BETA", "GAMMA"), 1), "AB")
    return "".join(f"{column};{name};{code_list(f'{name} {letter}', size)};x;y\n" for (column, name), letter in lines)


class ConsoleTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="ventoctl-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode("cp1252"))
        return str(path)

    def simulate(self, **scenario):
        """The option for a scenario without latency, or with what is given."""
        scenario = {"reportMicroseconds": 0, **scenario}
        return "--simulate=" + self.file("scenario.json", json.dumps(scenario))

    def run_console(self, status, *arguments, stdout=subprocess.PIPE):
        """Runs the program, which has to end with `status` unless that is None; its two outputs as text."""
        done = subprocess.run(
            [*COMMAND, *arguments], env=PLAIN_ENVIRONMENT, cwd=self.folder, timeout=300, check=False,
            stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE,
        )  # fmt: skip
        out, err = (text.decode().replace("\r\n", "\n") for text in (done.stdout or b"", done.stderr))
        self.assertIn(status, (done.returncode, None), f"{arguments}\n{out}\n{err}")
        return out, err

    def run_json(self, status, *arguments):
        return json.loads(self.run_console(status, *arguments, "--json")[0])
