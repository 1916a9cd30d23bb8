# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Whole runs in which one system call fails: some of those that scripts/inject_failures makes."""

import importlib.util
import shutil
import unittest

import builds
import isolation
import skipping

skipping.require_modules("seccomp")
import system_calls
from failing_calls import runs, scenarios, stages, sweep

RUNS = 70  # of each scenario
RUNS_WITH_WINDOW = 12  # which take longer
SEED = 1

# Calls whose failure the program once took for success, or after which it crashed or hung.
WATCHED = ["clone3", "dup3", "fcntl", "poll"]

needs_screen = unittest.skipUnless(shutil.which("Xvfb") and importlib.util.find_spec("Xlib"),
                                   "xvfb or python3-xlib is not installed")


class InjectedFailuresTest(unittest.TestCase):
    def sweep(self, name, size=RUNS, watched=WATCHED):
        with stages.scenario(name) as scenario:
            plan = list(sweep.failures(scenario, sweep.count(scenario)))
            chosen = [(failure, phase) for failure, phase in plan if failure.name in watched and failure.number <= 2]
            for failure, phase in chosen + sweep.sample(plan, size, SEED):
                result = sweep.attempt(scenario, failure)
                self.assertNotEqual(result.verdict, runs.BAD, sweep.describe(result, phase))

    def test_a_report_to_be_printed(self):
        self.sweep("print")

    def test_a_report_to_be_written(self):
        self.sweep("file")

    @isolation.needs_namespaces
    @unittest.skipUnless(shutil.which("nginx") and shutil.which("openssl"), "nginx or openssl is not installed")
    @unittest.skipUnless(importlib.util.find_spec("werkzeug"), "python3-werkzeug is not installed")
    def test_a_report_to_be_uploaded(self):
        self.sweep("upload")

    def test_an_upload_that_is_refused(self):
        self.sweep("fallback")

    @isolation.needs_namespaces
    @needs_screen
    def test_a_report_uploaded_from_the_window(self):
        self.sweep("window", RUNS_WITH_WINDOW)


class JudgeTest(unittest.TestCase):
    """The judge is not to be fooled by a run that looks good."""

    def judge(self, name, spoil):
        class Spoilt(scenarios.SCENARIOS[name]):
            def prepare(self, folder):
                super().prepare(folder)
                spoil(folder)

        return runs.Run(Spoilt(), lambda call: 0)

    def test_missing_bytes(self):
        for name in ("print", "file", "fallback"):
            with self.subTest(name):
                run = self.judge(name, lambda folder: (folder / "work/big").write_text(scenarios.BIG[:-1]))
                self.assertEqual(run.verdict, runs.BAD, run.detail)

    def test_a_file_that_is_left_behind(self):
        run = self.judge("file", lambda folder: (folder / "work/.halvik-diagnostic-Xa1b2c").write_text("x"))
        self.assertEqual(run.verdict, runs.BAD, run.detail)

    def test_a_report_that_the_desktop_does_not_take(self):
        in_the_way = "home/Desktop/diagnostic_results.txt"
        run = self.judge("fallback", lambda folder: (folder / in_the_way).mkdir(parents=True))
        self.assertEqual(run.verdict, runs.SAVED, run.detail)

    @isolation.needs_namespaces
    @needs_screen
    def test_missing_bytes_from_a_window(self):
        with stages.scenario("window") as scenario:
            prepare = scenario.prepare

            def spoil(folder):
                prepare(folder)
                (folder / "work/big").write_text(scenarios.BIG[:-1])

            scenario.prepare = spoil
            run = runs.Run(scenario, lambda call: 0)
            self.assertEqual(run.verdict, runs.BAD, run.detail)

    @isolation.needs_namespaces
    @needs_screen
    def test_an_upload_that_fails_in_a_window(self):
        with stages.scenario("window") as scenario:
            failure = sweep.Failure(scenario.name, "socket", by_child=False, number=1, error="EMFILE",
                                    forever=True, closing=False)
            result = sweep.attempt(scenario, failure)
            self.assertEqual(result.verdict, runs.SAVED, result.detail)
            self.assertEqual(scenario.outcomes, ["failure", "link"])

    def test_nothing_wrong(self):
        run = self.judge("print", lambda folder: None)
        self.assertEqual(run.verdict, runs.WHOLE, run.detail)


if builds.is_sanitized():
    skipping.skip_file("the sanitizer makes calls of its own, and does not promise to survive that they fail")
if not system_calls.is_permitted():
    skipping.skip_file("this machine permits no filter that asks about system calls")
isolation.run_tests()
