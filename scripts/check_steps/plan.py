# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Which steps there are, what they need, and what goes on side by side."""

import signal
import threading
import time

from check_steps import paths, work
from check_steps.commands import end_all
from check_steps.step import Step

STEPS = ["release", "posix", "sanitize", "form", "tidy", "macos", "mutate", "fuzz"]


def plan(chosen, base):
    """Three lists of steps: what the others need first, and then, side by side, what compiles and what tests. Tests
    mostly wait."""
    results = {name: paths.ROOT / f"build/{folder}" for name, folder in {
        "lab": "release/tests-of-lab.xml", "failures": "release/tests-of-failures.xml", "posix": "posix/tests.xml",
        "sanitize": "sanitize/tests.xml"}.items()}
    first, compiling, testing = [], [], []

    def add_build(title, *words, to=compiling):
        to.append(Step(title, work.build(*words)))
        return to[-1]

    def add_tests(title, needs, preset, name, *choice):
        testing.append(Step(title, work.tests(preset, results[name], *choice), needs, results[name]))

    if "release" in chosen:
        built = add_build("building for users", "release", to=first)
        add_tests("the lab and its scenarios", built, "release", "lab", "--label-regex", "check", "--tests-regex",
                  "^lab/")
        add_tests("runs in which a call fails", built, "release", "failures", "--label-regex", "check",
                  "--exclude-regex", "^lab/")
    # Of the tests, the other builds leave out only those that look at no build, but at the files of the sources, and
    # those that tests/CMakeLists.txt adds to the build for users alone: the lab's own life, and the package. Whatever
    # runs the program depends on how its platform was built.
    repeated = ["--label-exclude", "sources"]
    if "posix" in chosen:
        # The benchmarks keep up with the program. The reader of reports has nothing that is a system's own.
        built = add_build("building without what is Linux's own", "posix", "-D", "HALVIK_BENCHMARKS=ON",
                          "-D", "HALVIK_READER=OFF")
        add_tests("testing without what is Linux's own", built, "posix", "posix", *repeated)
    if "sanitize" in chosen:
        built = add_build("building with sanitizers", "sanitize")
        add_tests("testing with sanitizers", built, "sanitize", "sanitize", *repeated)
    for name, title, function in [("form", "form of the sources", work.check_form),
                                  ("tidy", "habits that lead to mistakes", work.tidy(base)),
                                  ("macos", "building for macOS", work.compile_for_macos),
                                  ("mutate", "changes that a test must notice", work.mutate),
                                  ("fuzz", "fuzzing, a minute each", work.fuzz)]:
        if name in chosen:
            compiling.append(Step(title, function))
    return first, compiling, testing


def run_all(first, *side_by_side):
    def run_in_order(steps):
        for step in steps:
            step.run()

    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
        signal.signal(number, end_all)
    # No step is run by the main thread, which has to be free for a signal.
    for lists in ([first], side_by_side):
        threads = [threading.Thread(target=run_in_order, args=(steps,)) for steps in lists]
        for thread in threads:
            thread.start()
        while any(thread.is_alive() for thread in threads):
            time.sleep(0.2)  # a signal that another thread got is handled between two of these
