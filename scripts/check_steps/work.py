# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What each step does."""

import os

from check_steps import paths, sources
from check_steps.commands import call, run
from check_steps.step import Failed, Skipped

PROCESSORS = len(os.sched_getaffinity(0))
TIDIED = ["app", "diagnostics", "platform", "reader", "report", "text", "ui"]
FUZZ_SECONDS = "60"
MUTANTS = "30"
SURVIVORS = "3"  # Each change of the sources makes another sample, and the tests notice 97 of 100 changes, not all.
SKIPPED = 77  # the exit status of a script that lacks what it needs


def build(preset, *settings):
    def work(log):
        call(log, "cmake", "--preset", preset, "-D", "BUILD_TESTING=ON", *settings)
        call(log, "cmake", "--build", "--preset", preset, "--parallel", PROCESSORS, patient=True)
    return work


def tests(preset, results, *choice):
    def work(log):
        results.unlink(missing_ok=True)
        call(log, "ctest", "--preset", preset, *choice, "--output-junit", results)
    return work


def check_form(log):
    call(log, "clang-format-19", "--dry-run", "--Werror", *sources.find(".h", ".cpp"))


def tidy(base):
    def work(log):
        files = [path for path in sources.find(".cpp") if path.split("/")[0] in TIDIED]
        if base:
            files = sources.affected(files, base)
        log.write(f"{len(files)} files\n".encode())
        log.flush()
        call(log, "cmake", "--preset", "release", "-D", "BUILD_TESTING=ON")
        call(log, "cmake", "--preset", "posix", "-D", "BUILD_TESTING=ON")
        of_posix = [path for path in files if path.endswith("_posix.cpp")]
        of_release = [path for path in files if path not in of_posix]
        # All are looked at, whatever is found in the first ones.
        found = [run_tidy(log, *each) for each in (("release", of_release), ("posix", of_posix)) if each[1]]
        if any(found):
            raise Failed("clang-tidy is not content")
    return work


def run_tidy(log, preset, files):
    """Whether clang-tidy finds anything. Files that take longest, with Qt's headers, come first."""
    slow_first = sorted(files, key=lambda path: "#include <Q" not in (paths.ROOT / path).read_text())
    words = ["xargs", "-0", "-n", "1", "-P", PROCESSORS, "clang-tidy-19", "-p", f"build/{preset}", "--quiet"]
    return run(log, words, "\0".join(slow_first).encode(), patient=True) != 0


def mutate(log):
    call(log, paths.ROOT / "scripts/mutate", "--sample", MUTANTS, "--survivors", SURVIVORS, patient=True)


def compile_for_macos(log):
    status = run(log, [paths.ROOT / "scripts/macos"], patient=True)
    if status == SKIPPED:
        raise Skipped
    if status != 0:
        raise Failed(f"scripts/macos ended with status {status}")


def fuzz(log):
    call(log, paths.ROOT / "scripts/fuzz", FUZZ_SECONDS, patient=True)
