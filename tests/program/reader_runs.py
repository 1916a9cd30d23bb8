# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs of halvik-report, and the reports that they read."""

import pathlib
import subprocess
import tempfile
import unittest

import builds
from project import ROOT

DATA = ROOT / "tests/unit/reader/data"
SEPARATOR = "-" * 45 + "Results for: "
NOTHING, PROBLEM, UNREADABLE = 0, 1, 2


def run(*arguments, stdin=b"", prefix=(), **options):
    return subprocess.run([*prefix, builds.report_reader(), *arguments], input=stdin, capture_output=True, timeout=300,
                          check=False, **options)


def report(name="clear.txt"):
    return (DATA / name).read_text()


def changed(text, old, new):
    if old not in text:
        raise AssertionError(old)
    return text.replace(old, new)


SMALL_MTU = ("mtu 1500", "mtu 1000")


class ReaderTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="halvik-report-")
        self.addCleanup(folder.cleanup)
        self.work = pathlib.Path(folder.name)

    def file(self, name, content):
        path = self.work / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def assert_harmless(self, output):
        """Nothing in it would be obeyed by a terminal."""
        self.assertNotRegex(output.decode(), "[^\n\x20-\x7e\xa0-\U0010ffff]")
