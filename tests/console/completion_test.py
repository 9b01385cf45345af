"""What each shell offers behind a beginning, with the script that the console program prints for it."""

import shutil
import subprocess
import unittest

import pexpect

from ventoctl import COMMAND, PLAIN_ENVIRONMENT, ConsoleTest

CASES = (
    ("chec", {"check"}), ("co", {"convert", "completion"}), ("check --st", {"--strict"}), ("read --lang", {"--language"}),
    ("read --language i", {"ita"}), ("completion f", {"fish"}), ("help de", {"devices", "decode"}), ("--json enc", {"encode"}),
    ("program --con", {"--consume"}), ("check VENTO-a", {"VENTO-as.qlb", "VENTO-at.qlb"}), ("read --simulate=sc", {"scene.json"}),
)  # fmt: skip


@unittest.skipIf(len(COMMAND) > 1, "a program of another system")
class Completion(ConsoleTest):
    def setUp(self):
        super().setUp()
        for name in ("VENTO-as.qlb", "VENTO-at.qlb", "scene.json"):
            self.file(name, "")
        for language in ("it", "en"):
            for shell in ("bash", "zsh", "fish"):
                script = self.run_console(0, "completion", shell, "--language", language)[0]
                self.file(f"{shell}.{language}", script.encode())
        self.assertIn("bash, zsh", self.run_console(0, "help", "completion")[0])
        self.run_console(64, "completion", "csh")

    def ask(self, *command):
        done = subprocess.run(command, cwd=self.folder, env=PLAIN_ENVIRONMENT, capture_output=True, text=True, timeout=60)
        self.assertEqual(done.stderr, "")
        return done.stdout

    @unittest.skipUnless(shutil.which("bash"), "no bash")
    def test_bash(self):
        # As readline does it: '=' parts words, and what gives nothing is completed by the names of files.
        offer = r"""
            source "$1"; shift
            COMP_WORDS=(ventoctl); for word in "$@"; do COMP_WORDS+=("$word"); done
            COMP_CWORD=$#; _ventoctl
            [ ${#COMPREPLY[@]} -gt 0 ] || COMPREPLY=($(compgen -f -- "${COMP_WORDS[COMP_CWORD]}"))
            printf '%s\n' "${COMPREPLY[@]}"
        """
        for line, wanted in CASES:
            words = line.replace("=", " = ").split()
            for language in ("it", "en"):
                self.assertEqual(set(self.ask("bash", "-c", offer, "bash", f"bash.{language}", *words).split()), wanted, line)

    @unittest.skipUnless(shutil.which("fish"), "no fish")
    def test_fish(self):
        for line, wanted in CASES:
            out = self.ask("fish", "--no-config", "-c", 'source $argv[1]; complete -C "ventoctl $argv[2]"', "fish.it", line)
            offered = {each.split("\t")[0] for each in out.splitlines()}
            if "=" in line:
                wanted = {line.split()[-1].split("=")[0] + "=" + each for each in wanted}
            self.assertEqual({each for each in offered if each.startswith(line.split()[-1])}, wanted, line)

    @unittest.skipUnless(shutil.which("zsh"), "no zsh")
    def test_zsh(self):
        shell = pexpect.spawn(
            "zsh", ["-f", "-i"], cwd=self.folder, dimensions=(24, 200), timeout=120,
            env={**PLAIN_ENVIRONMENT, "ZDOTDIR": str(self.folder)},
        )  # fmt: skip
        self.addCleanup(shell.close, force=True)

        def type_in(text, until):
            shell.buffer = b""  # what is left of the answer before
            shell.send(text)
            shell.expect_exact(until)

        type_in("PS1='>>'; unset zle_bracketed_paste\n", b">>\x1b")
        type_in("autoload -Uz compinit && compinit -u -D && . ./zsh.it && echo rea''dy\n", b"ready")
        # One match is put in; of several the list names all.
        for line, wanted in CASES:
            tail = line.split()[-1]
            first = max(wanted, key=len)
            rest = first[len(tail.split("=")[-1]) :] if len(wanted) == 1 else first
            type_in(f"\x15ventoctl {line}\t" + ("" if len(wanted) == 1 else "\t"), rest.encode())
        type_in("\x15exit\n", b"exit")
