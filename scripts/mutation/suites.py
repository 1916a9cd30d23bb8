# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The tests that can see a file, in the order in which they are tried."""

import dataclasses
import re
import threading
import time

from mutation import isolation, modules

SLOW_MS = 400  # tests that take longer are tried last, and only those of the changed file itself
# A changed program may compute for so many times as long as the unchanged one took, and so much longer. It may wait for
# more, as others may be at work on the machine.
LIMIT_FACTOR, LIMIT_SECONDS, PATIENCE = 5, 10, 3
UNLIMITED_SECONDS = 3600


class Broken(Exception):
    """Tests that fail without any change."""


@dataclasses.dataclass
class Step:
    """Tests of one executable, or of the whole program."""

    target: str  # an executable with unit tests, or "" for a test of the whole program
    words: list  # what follows the executable's name, or the name of the test
    limit: int = UNLIMITED_SECONDS  # for computing


class Suites:
    def __init__(self, tree, commands):
        self.tree = tree
        self.commands = commands
        self.suites_of = {}  # by the path of a test without its ending
        self.times_ms = {}  # by the target, then by the test
        self.program_seconds = {}
        self.lock = threading.Lock()
        for folder in modules.TEST_FOLDERS:
            for path in sorted((tree.root / "tests/unit" / folder).glob("*_test.cpp")):
                names = set(re.findall(r"^TEST(?:_F|_P)?\((\w+),", path.read_text(), re.MULTILINE))
                self.suites_of[f"{folder}/{path.stem.removesuffix('_test')}"] = names

    def measure(self, files):
        """Runs the unit tests of the unchanged program that see these files. Throws Broken."""
        names = sorted(name for names in self.suites_of.values() for name in names)
        for target in sorted({target for file in files for target in modules.unit_targets(file)}):
            times = self.times_ms.setdefault(target, {})
            step = Step(target, ["--gtest_filter=" + ":".join(f"{name}.*" for name in names)])
            for name, milliseconds in re.findall(r"^\[       OK \] (\S+) \((\d+) ms\)$", self.run(step), re.MULTILINE):
                times[name] = int(milliseconds)

    def measure_program(self, step):
        """Runs a test of the whole program when it is first needed, which is seldom. Throws Broken."""
        with self.lock:
            if step.words[0] not in self.program_seconds:
                began = time.monotonic()
                self.run(step)
                self.program_seconds[step.words[0]] = time.monotonic() - began
            step.limit = limit(self.program_seconds[step.words[0]])

    def run(self, step):
        words, environment = self.command(step, self.tree.folder)
        status, output = self.commands.run(words, env=environment)
        if status != 0:
            raise Broken(f"tests fail without a change:\n{output}")
        return output

    def steps(self, file):
        """The file's own quick tests, all other quick ones, its own slow ones."""
        own = self.suites_of.get(file.removesuffix(".cpp"), set())
        chosen = ([], [], [])
        for target in modules.unit_targets(file):
            for name, milliseconds in self.times_ms[target].items():
                is_own = name.partition(".")[0] in own
                if milliseconds <= SLOW_MS:
                    chosen[0 if is_own else 1].append((target, name))
                elif is_own:
                    chosen[2].append((target, name))
        steps = [self.step(target, names) for group in chosen for target, names in by_target(group).items()]
        steps += [Step("", [name]) for name in modules.PROGRAM_TESTS.get(file, [])]
        return steps

    def step(self, target, names):
        seconds = sum(self.times_ms[target][name] for name in names) / 1000
        words = ["--gtest_brief=1", "--gtest_fail_fast", "--gtest_filter=" + ":".join(names)]
        return Step(target, words, limit(seconds))

    def command(self, step, folder):
        """The command of a step whose executables are in a folder, and its environment."""
        environment = isolation.environment()
        if step.target:
            return [*isolation.prefix(step.limit), str(folder / step.target), *step.words], environment
        root = self.tree.root
        environment.update(HALVIK_DIAGNOSTIC=str(folder / "halvik-diagnostic"),
                           HALVIK_TEST_BUILD=str(folder / "diagnostic_test_build"),
                           HALVIK_ENDPOINTS=str(root / "diagnostics/endpoints_built_in.cpp"),
                           HALVIK_PLATFORM="linux", PYTHONPATH=str(root / "tests/lib"))
        test = root / "tests/program" / f"{step.words[0]}_test.py"
        return [*isolation.prefix(step.limit), "/usr/bin/python3", str(test), "--failfast"], environment


def limit(seconds):
    return round(LIMIT_SECONDS + LIMIT_FACTOR * seconds)


def by_target(pairs):
    groups = {}
    for target, name in pairs:
        groups.setdefault(target, []).append(name)
    return groups
