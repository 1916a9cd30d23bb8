# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What scripts/check counts, which sources it takes for changed, and what it leaves behind."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest
import unittest.mock

from check_steps import paths, sources, step
from check_steps.plan import plan
from check_steps.step import Step

RESULTS = """<testsuite>
  <testcase name="A" status="run"/>
  <testcase name="B" status="run"><system-out>skipped message="SKIP_x"</system-out></testcase>
  <testcase name="C" status="fail"><failure message="Failed"/></testcase>
  <testcase name="D" status="notrun"><skipped message="SKIP_RETURN_CODE=77"/></testcase>
  <testcase name="E" status="notrun"><skipped message="Unable to find executable"/></testcase>
  <testcase name="F" status="disabled"/>
</testsuite>
"""

SOURCES = {
    "app/far.cpp": '#include "app/near.h"\n',
    "app/near.h": '#include "report/changed.h"\n',
    "report/changed.h": "",
    "report/changed.cpp": '#include <string>\n#include "report/changed.h"\n',
    "ui/other.cpp": '#include "ui/other.h"\n',
    "ui/other.h": "",
    "README.md": "",
    ".clang-tidy": "",
}


class CheckTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="halvik-")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.replace(paths, "ROOT", self.root)
        self.replace(step, "say", lambda _: None)

    def replace(self, *what):
        patch = unittest.mock.patch.object(*what)
        patch.start()
        self.addCleanup(patch.stop)

    def test_each_test_is_counted_once(self):
        (self.root / "tests.xml").write_text(RESULTS)
        self.assertEqual(step.count_tests(self.root / "tests.xml"), (2, 2, 2))

    def test_a_step_that_fails_is_never_counted_as_none(self):
        (self.root / "tests.xml").write_text("<testsuite><testcase status='run'/></testsuite>")
        (self.root / "logs").mkdir()
        self.replace(paths, "LOGS", self.root / "logs")

        def fail(_):
            raise step.Failed("it ended early")

        broken = Step("broken", fail)
        dependent = Step("dependent", lambda _: None, needs=broken)
        tests = Step("tests", fail, results=self.root / "tests.xml")
        well = Step("well", lambda _: None)
        for each in (broken, dependent, tests, well):
            each.run()
        self.assertEqual([each.counts for each in (broken, dependent, tests, well)],
                         [(0, 1, 0), (0, 1, 0), (1, 1, 0), (1, 0, 0)])

    def test_a_script_that_lacks_its_compiler_is_skipped(self):
        (self.root / "scripts").mkdir()
        script = self.root / "scripts/macos"
        self.replace(paths, "LOGS", self.root)
        for status, ending, counts in ((0, "done", (1, 0, 0)), (1, "FAILED", (0, 1, 0)), (77, "skipped", (0, 0, 1))):
            with self.subTest(ending):
                script.write_text(f"#!/bin/sh\nexit {status}\n")
                script.chmod(0o755)
                [[macos]] = filter(None, plan(["macos"], None))
                macos.run()
                self.assertEqual((macos.ending, macos.counts, macos.succeeded), (ending, counts, ending != "FAILED"))

    def test_a_signal_ends_what_it_has_started(self):
        for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
            reader, writer = os.pipe()
            code = f"""import pathlib
from check_steps import commands, paths, plan, step
paths.LOGS = pathlib.Path({str(self.root)!r})
words = ["sh", "-c", "exec >/proc/$PPID/fd/{writer}; echo begun; sleep 1000; true"]
plan.run_all([], [step.Step("long", lambda log: commands.call(log, *words))])"""
            with self.subTest(number.name), open(reader, "rb") as output, subprocess.Popen(
                    [sys.executable, "-c", code], pass_fds=[writer]) as process:
                os.close(writer)
                self.assertEqual(output.readline(), b"begun\n")
                process.send_signal(number)
                self.assertEqual(output.read(), b"")  # once nobody can write to it any more
                self.assertEqual(process.wait(), 128 + number)

    def affected_by(self, *changes):
        for path, text in SOURCES.items():
            (self.root / path).parent.mkdir(exist_ok=True)
            (self.root / path).write_text(text)
        git = ["git", "-C", self.root, "-c", "user.name=x", "-c", "user.email=x@example"]
        for words in (["init", "-q"], ["add", "."], ["commit", "-q", "-m", "x"]):
            subprocess.run([*git, *words], check=True)
        for path in changes:
            (self.root / path).write_text("// changed\n")
        return sources.affected(sources.find(".cpp"), "HEAD")

    def test_a_header_changes_whoever_includes_it(self):
        self.assertEqual(self.affected_by("report/changed.h"), ["app/far.cpp", "report/changed.cpp"])

    def test_a_new_source_is_changed(self):
        self.assertEqual(self.affected_by("ui/new.cpp", "README.md"), ["ui/new.cpp"])

    def test_new_settings_change_all(self):
        self.assertEqual(len(self.affected_by(".clang-tidy")), 3)


if __name__ == "__main__":
    unittest.main()
