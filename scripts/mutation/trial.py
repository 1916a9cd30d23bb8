# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Builds the program with one change and asks the tests."""

import dataclasses
import hashlib
import pathlib
import shutil
import threading

from mutation import isolation, modules, suites

KILLED, TIMED_OUT, SURVIVED, LISTED, NOT_BUILT, SAME = \
    "killed", "by time", "survived", "listed", "not built", "same code"
VERDICTS = (KILLED, TIMED_OUT, SURVIVED, LISTED, NOT_BUILT, SAME)
COMPILE_SECONDS = 300


@dataclasses.dataclass(frozen=True)
class Outcome:
    verdict: str
    by: str = ""  # the step that decided it


class KnownCode:
    """The object codes that need no tests: those of the unchanged files, and of changes that were tried before."""

    def __init__(self):
        self.lock = threading.Lock()
        self.seen = {}

    def is_new(self, file, code):
        with self.lock:
            codes = self.seen.setdefault(file, set())
            is_new = code not in codes
            codes.add(code)
            return is_new


class Worker:
    """Tries one change after the other in a folder of its own."""

    def __init__(self, folder, tree, suites, commands, known_code):
        self.folder = folder
        self.tree = tree
        self.suites = suites
        self.commands = commands
        self.known_code = known_code
        self.prepared = set()
        shutil.rmtree(folder, ignore_errors=True)
        (folder / "libexec").mkdir(parents=True)
        for script in ("open_in_text_editor", "scutil", "system_profiler"):
            if (tree.folder / "libexec" / script).exists():
                shutil.copy(tree.folder / "libexec" / script, folder / "libexec")

    def compile(self, file, source):
        """The changed object, or None if it does not build."""
        copy = self.folder / pathlib.Path(file).name
        copy.write_bytes(source)
        changed = copy.with_suffix(".o")
        words = self.tree.compile_command(file, copy, changed, "-include", str(copy.with_suffix(".prelude.h")))
        status, output = self.commands.run(words, COMPILE_SECONDS, cwd=self.folder)
        return changed if status == 0 else None

    def prepare(self, file, source):
        """Compiles what the file includes, which takes longer than the file itself, and the unchanged file."""
        if file in self.prepared:
            return
        prelude = self.folder / f"{pathlib.Path(file).stem}.prelude.h"
        prelude.write_bytes(b"".join(line for line in source.splitlines(True) if line.startswith(b"#include")))
        words = self.tree.compile_command(file, prelude, f"{prelude}.gch", "-x", "c++-header")
        status, output = self.commands.run(words, COMPILE_SECONDS, cwd=self.folder)
        unchanged = self.compile(file, source)
        if status != 0 or unchanged is None:
            raise RuntimeError(f"{file} does not build without a change: {output}")
        self.known_code.is_new(file, digest(unchanged))
        self.prepared.add(file)

    def attempt(self, mutant, source):
        self.prepare(mutant.file, source)
        changed = self.compile(mutant.file, mutant.applied_to(source))
        if changed is None:
            return Outcome(NOT_BUILT)
        if not self.known_code.is_new(mutant.file, digest(changed)):
            return Outcome(SAME)
        linked = set()
        for step in self.suites.steps(mutant.file):
            for target in [step.target] if step.target else modules.PROGRAM_TARGETS:
                if target not in linked and not self.link(target, mutant.file, changed):
                    return Outcome(NOT_BUILT)
                linked.add(target)
            if not step.target:
                self.suites.measure_program(step)
            verdict = self.ask(step)
            if verdict != SURVIVED:
                return Outcome(verdict, step.target or step.words[0])
        return Outcome(SURVIVED)

    def link(self, target, file, changed):
        output = self.folder / self.tree.output_of(target)
        words = self.tree.link_command(target, file, changed, output)
        status, text = self.commands.run(words, COMPILE_SECONDS, cwd=self.tree.folder)
        return status == 0

    def ask(self, step):
        words, environment = self.suites.command(step, self.folder)
        status, output = self.commands.run(words, step.limit * suites.PATIENCE, env=environment)
        if status in (None, isolation.ENDLESS):
            return TIMED_OUT
        return SURVIVED if status == 0 else KILLED


def digest(path):
    return hashlib.sha256(path.read_bytes()).digest()
