# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The executables that are tested, as the environment names them."""

import os
import pathlib

PLATFORM = os.environ.get("HALVIK_PLATFORM", "linux")  # what the program was built for


def program():
    """The program itself, with its real plan and its real submission endpoint: run it inside a namespace only."""
    return os.path.abspath(os.environ["HALVIK_DIAGNOSTIC"])


def test_build():
    """The same program with fake commands and a submission endpoint that the test chooses."""
    return os.path.abspath(os.environ["HALVIK_TEST_BUILD"])


def report_reader():
    """The reader of reports."""
    return os.path.abspath(os.environ["HALVIK_REPORT"])


def folder():
    """Where the program was built."""
    return pathlib.Path(program()).parent


def is_sanitized():
    """Whether all was built with sanitizers, which take memory, system calls and descriptors of their own."""
    return b"__asan_init" in pathlib.Path(test_build()).read_bytes()


def is_counting_branches():
    """Whether the program was built for scripts/coverage. It then writes its counts where it was built."""
    return b"__gcov_dump" in pathlib.Path(test_build()).read_bytes()
