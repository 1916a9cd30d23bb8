# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs of the program: in folders of their own, to their end, and what they leave."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import builds
from polling import GUARD_SECONDS
from report_text import as_bytes

# A prefix for the program: permissions bind it, also when root runs the tests.
UNPRIVILEGED = ["setpriv", "--bounding-set=-all", "--inh-caps=-all", "--"]


class Ended:
    """What a run of the program left: its status and both of its streams."""

    def __init__(self, path, pid, status, stdout, stderr):
        self.name = os.path.basename(path)
        self.pid = pid
        self.status = status
        self.stdout = stdout
        self.stderr = stderr

    @property
    def messages(self):
        """The messages of the log lines on standard error, without a closing line feed; fails on any other output."""
        stamp = rb"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} " + re.escape(f"{self.name}[{self.pid}] ".encode())
        pieces = re.split(rb"^" + stamp, self.stderr, flags=re.MULTILINE)
        if pieces[0]:
            raise AssertionError(f"not a log line on standard error: {self.stderr!r}")
        for piece in pieces[1:]:
            if not piece.endswith(b"\n"):
                raise AssertionError(f"a log line without its end: {self.stderr!r}")
        return [piece[:-1].decode() for piece in pieces[1:]]


class ProgramTest(unittest.TestCase):
    """A test with a folder and a home of its own, in which it runs the program."""

    maxDiff = 2000

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.home = self.folder / "home"
        self.home.mkdir()
        self.runtime = self.folder / "runtime"
        self.runtime.mkdir()
        self.work = self.folder / "work"
        self.work.mkdir()
        self.desktop_file = self.home / "Desktop" / "diagnostic_results.txt"

    def environment(self, changes=None):
        """The few variables that a run needs, so that the tester's own settings do not count."""
        kept = ["PATH", "TMPDIR", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"]
        variables = {name: os.environ[name] for name in kept if name in os.environ}
        # As in any session: where there is none, the desktop's settings leave an empty folder in the home instead.
        variables.update(HOME=str(self.home), XDG_RUNTIME_DIR=str(self.runtime), LC_ALL="C.UTF-8",
                         QT_QPA_PLATFORM="none")
        for name, value in (changes or {}).items():
            if value is None:
                variables.pop(name, None)
            else:
                variables[name] = str(value)
        return variables

    def start(self, path, options, env=None, prefix=(), stdin=subprocess.DEVNULL, **others):
        """Starts the program, behind another command that must end by becoming it."""
        others.setdefault("stdout", subprocess.PIPE)
        others.setdefault("stderr", subprocess.PIPE)
        others.setdefault("cwd", self.work)
        process = subprocess.Popen([*prefix, path, *options], env=self.environment(env), stdin=stdin, **others)
        process.path = path
        self.addCleanup(self.end, process)
        return process

    def finish(self, process, stdin=None):
        try:
            stdout, stderr = process.communicate(stdin, timeout=GUARD_SECONDS)
        except subprocess.TimeoutExpired:
            process.kill()
            stdout, stderr = process.communicate()
            self.fail(f"the program did not end; standard output {stdout[:500]!r}, standard error {stderr[:500]!r}")
        return Ended(process.path, process.pid, process.returncode, stdout, stderr)

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.communicate()

    def run_program(self, options, **others):
        return self.finish(self.start(builds.program(), options, **others))

    def start_test_build(self, options, commands=(), submit="http://127.0.0.1:1/diagnosticsubmit", env=None, **others):
        """Starts the test build with a shell command line for each of the plan's first commands."""
        lines = self.folder / "commands"
        lines.write_bytes(b"".join(as_bytes(command) + b"\n" for command in commands))
        env = {"TEST_BUILD_COMMANDS": lines, "TEST_BUILD_SUBMIT_URL": submit, **(env or {})}
        return self.start(builds.test_build(), options, env=env, **others)

    def run_test_build(self, options, commands=(), stdin_bytes=None, **others):
        if stdin_bytes is not None:
            others["stdin"] = subprocess.PIPE
        return self.finish(self.start_test_build(options, commands, **others), stdin_bytes)

    def assert_submission_failed(self, ended, report, stdout=b""):
        """The run lost its upload, said so, and kept the whole report on the Desktop."""
        self.assertEqual(ended.stdout, stdout)
        self.assertIn("could not send log, saved to Desktop", ended.messages)
        self.assertEqual(ended.status, 1)
        self.assert_same_text(self.desktop_file.read_bytes(), report)

    def assert_same_text(self, actual, expected):
        """Compares long texts, showing the first difference only."""
        if actual == expected:
            return
        at = next((i for i, (a, b) in enumerate(zip(actual, expected)) if a != b), min(len(actual), len(expected)))
        window = slice(max(0, at - 40), at + 80)
        self.fail(f"{len(actual)} bytes instead of {len(expected)}, differing at {at}: "
                  f"{actual[window]!r} instead of {expected[window]!r}")

    def assert_only_files(self, folder, names):
        self.assertEqual(sorted(os.listdir(folder)), sorted(names))
