# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""How bash, zsh and fish complete the command line: each runs at a terminal, and a program in the place of ours notes
the words that it is started with in the end."""

import os
import pathlib
import pty
import select
import shutil
import subprocess
import tempfile
import time
import unittest

import option_table
from project import ROOT
from skipping import skip_file

COMPLETIONS = ROOT / "share/completions"
PROGRAM = "halvik-diagnostic"
GUARD_SECONDS = 60  # ends a shell that hangs; no test waits for it otherwise

PROMPT = b"ready> "
NOTED = b"words noted"
FAKE_PROGRAM = """#!/bin/sh
printf '%s\\n' "$@" >"$HOME/words"
echo words noted
"""

# A key that puts all candidates into the line, which bash has by itself.
ALL = "\x1b*"
ZSH = """
fpath=(~/functions $fpath)
autoload -Uz compinit
compinit -u
all_candidates() { comppostfuncs=(insert_all); _main_complete }
insert_all() { compstate[insert]=all }
zle -C all_candidates complete-word all_candidates
bindkey '\\e*' all_candidates
PS1='ready> '
"""


def environment(home):
    """What a shell goes by; it leaves its files in the home folder."""
    return {"HOME": str(home), "XDG_RUNTIME_DIR": str(home), "PATH": f"{home}:/usr/bin:/bin", "TERM": "dumb",
            "LC_ALL": "C.UTF-8"}


class Terminal:
    """A command at a terminal of its own."""

    def __init__(self, command, folder):
        self.process, self.descriptor = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(command[0], command, environment(folder))

    def wait_for(self, text):
        shown = b""
        deadline = time.monotonic() + GUARD_SECONDS
        while text not in shown:
            if not select.select([self.descriptor], [], [], max(0, deadline - time.monotonic()))[0]:
                raise AssertionError(f"waited in vain for {text} behind {shown}")
            shown += os.read(self.descriptor, 65536)

    def type(self, text):
        os.write(self.descriptor, text.encode())

    def close(self):
        os.close(self.descriptor)  # hangs up, at which a shell ends
        os.waitpid(self.process, 0)


class ShellTest:
    """What each of the shells has to do. `shell` is its name, `command` what starts it with our completions."""

    def setUp(self):
        if not shutil.which(self.shell):
            self.skipTest(f"{self.shell} is not installed")
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = pathlib.Path(folder.name)
        (self.home / PROGRAM).write_text(FAKE_PROGRAM)
        (self.home / PROGRAM).chmod(0o755)
        (self.home / "report.txt").touch()
        (self.home / "my report.txt").touch()
        (self.home / "folder").mkdir()
        (self.home / "folder/inside.txt").touch()

    def words_after(self, keys):
        """The words that the program is started with once these keys and the one that ends a line are pressed."""
        terminal = Terminal(self.command(), self.home)
        try:
            terminal.wait_for(PROMPT)
            terminal.type(f"{PROGRAM} {keys}\r")
            terminal.wait_for(NOTED)
        finally:
            terminal.close()
        return (self.home / "words").read_text().splitlines()

    def candidates(self, start):
        return self.words_after(start + ALL)

    def test_every_option_is_offered_and_no_other(self):
        self.assertEqual(sorted(self.candidates("-")), sorted(map(self.as_offered, option_table.words())))

    def as_offered(self, word):
        return word

    def test_options(self):
        self.assertEqual(self.words_after("--si\t --con\t"), ["--silent", "--console"])

    def test_a_value_stands_directly_behind_its_option(self):
        self.assertEqual(self.words_after("--dom\texample.com -s"), ["--domain=example.com", "-s"])
        self.assertEqual(self.words_after("--out\trep\t"), ["--output=report.txt"])

    def test_files(self):
        for option in ("-o=", "--output="):
            self.assertEqual(self.words_after(f"-s {option}rep\t"), ["-s", f"{option}report.txt"])
            self.assertEqual(self.words_after(f"{option}fold\tin\t-s"), [f"{option}folder/inside.txt", "-s"])
            self.assertEqual(self.words_after(f"{option}my\t-s"), [f"{option}my report.txt", "-s"])

    def test_files_nowhere_else(self):
        self.assertEqual(self.words_after("rep\t"), ["rep"])
        self.assertEqual(self.words_after("-d=rep\t"), ["-d=rep"])
        self.assertEqual(self.words_after("-o rep\t"), ["-o", "rep"])


class BashTest(ShellTest, unittest.TestCase):
    shell = "bash"

    def command(self):
        settings = self.home / "settings"
        settings.write_text(f"PS1='ready> '\n. {COMPLETIONS}/{PROGRAM}.bash\n")
        return ["bash", "--noprofile", "--rcfile", str(settings), "-i"]


class ZshTest(ShellTest, unittest.TestCase):
    shell = "zsh"

    def command(self):
        (self.home / "functions").mkdir(exist_ok=True)
        shutil.copy(COMPLETIONS / f"{PROGRAM}.zsh", self.home / "functions" / f"_{PROGRAM}")
        (self.home / ".zshrc").write_text(ZSH)
        return ["zsh", "-d", "-i"]

    def as_offered(self, word):
        """It takes the equals sign back where no value follows."""
        return word.removesuffix("=")


class FishTest(ShellTest, unittest.TestCase):
    shell = "fish"

    def command(self):
        prompt = "function fish_prompt; echo -n 'ready> '; end"
        return ["fish", "--no-config", "--init-command", f"{prompt}; source {COMPLETIONS}/{PROGRAM}.fish"]

    def candidates(self, start):
        """It has no such key, but tells them when it is asked."""
        lines = subprocess.run([*self.command()[:-1], f"source {COMPLETIONS}/{PROGRAM}.fish", "--command",
                                f"complete --do-complete '{PROGRAM} {start}'"], capture_output=True, check=True,
                               text=True, env=environment(self.home)).stdout.splitlines()
        return [line.split("\t")[0] for line in lines]


if __name__ == "__main__":
    if not any(map(shutil.which, ("zsh", "fish"))):
        skip_file("neither zsh nor fish is installed")
    unittest.main()
