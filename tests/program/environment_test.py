# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs on a machine that is in trouble: limits, missing folders, strange settings, and another run beside them."""

import os
import re
import signal

import builds
import isolation
import polling
import report_text
from environment_runs import ALL, ENDED_BY_ERROR, LINES, REPORT, EnvironmentTest


class LimitTest(EnvironmentTest):
    @staticmethod
    def descriptors(number):
        return ["sh", "-c", f'ulimit -n {number}; exec "$@"', "sh"]

    def test_descriptors_for_a_whole_run(self):
        self.assert_delivered_everywhere(*self.deliver_everywhere(prefix=self.descriptors(256)))

    def test_too_few_descriptors(self):
        """No command more can be started, which is said, and those that were started are not left behind."""
        if builds.is_sanitized():
            self.skipTest("the sanitizer needs descriptors of its own")
        reader, writer = os.pipe()
        self.addCleanup(os.close, writer)
        with os.fdopen(reader) as reading:
            ended = self.run_test_build(["-s", "-c", "-o=F"], ["exec cat"] * ALL, prefix=self.descriptors(64),
                                        stdin=reading)
        self.assertEqual((ended.status, ended.stdout), (-signal.SIGABRT, b""))
        self.assertEqual(ended.messages, [f"{ENDED_BY_ERROR} cannot run /bin/sh: Too many open files"])
        self.assert_only_files(self.home, [])
        self.assert_only_files(self.work, [])
        polling.wait_until(lambda: self.is_unread(writer), "the commands have ended")

    @staticmethod
    def is_unread(writer):
        try:
            os.write(writer, b"x")
        except BrokenPipeError:
            return True
        return False


class FolderTest(EnvironmentTest):
    def assert_saved(self, ended, path):
        self.assertEqual(ended.status, 1)
        self.assert_same_text(path.read_bytes(), REPORT)
        self.assertEqual(len([message for message in ended.messages if str(path) in message]), 1, ended.messages)

    def assert_saved_among_temporary_files(self, home):
        temporary = self.folder / "temporary"
        temporary.mkdir()
        ended = self.fail_to_submit(env={"HOME": home, "TMPDIR": temporary})
        [saved] = temporary.rglob("diagnostic_results.txt")
        self.assert_saved(ended, saved)

    def test_a_home_that_is_a_file(self):
        home = self.folder / "file"
        home.write_text("old")
        self.assert_saved_among_temporary_files(home)
        self.assertEqual(home.read_text(), "old")

    @isolation.needs_namespaces
    def test_a_home_that_is_only_read(self):
        home = self.folder / "read-only"
        home.mkdir()
        isolation.mount("-t", "tmpfs", "-o", "ro", "none", home)
        self.addCleanup(isolation.uncover, home)
        self.assert_saved_among_temporary_files(home)

    def test_no_place_for_temporary_files_is_needed_where_there_is_a_home(self):
        for place in ("/nowhere", "/proc", "/dev/null", ""):
            with self.subTest(place):
                self.assert_saved(self.fail_to_submit(env={"TMPDIR": place}), self.desktop_file)
                self.desktop_file.unlink()

    def test_neither_home_nor_the_named_place_for_temporary_files(self):
        for place in ("/nowhere", "/proc", "/dev/null"):
            with self.subTest(place):
                ended = self.fail_to_submit(env={"HOME": "/proc", "TMPDIR": place})
                [saving] = [message for message in ended.messages if message.startswith("saving ")]
                named = re.fullmatch(r"saving the report to (/(?:var/)?tmp/halvik-diagnostic-\w{6})"
                                     r"/diagnostic_results\.txt", saving)
                self.assertTrue(named, saving)
                folder = named[1]
                self.assertEqual(os.stat(folder).st_mode & 0o777, 0o700)
                self.assertEqual(os.listdir(folder), ["diagnostic_results.txt"])
                with open(f"{folder}/diagnostic_results.txt", "rb") as file:
                    self.assert_same_text(file.read(), REPORT)
                os.unlink(f"{folder}/diagnostic_results.txt")
                os.rmdir(folder)

    @isolation.needs_namespaces
    def test_no_place_at_all(self):
        """The report is lost, which is said."""
        for place in ("/tmp", "/var/tmp"):
            isolation.mount("--bind", place, place)
            self.addCleanup(isolation.uncover, place)
            isolation.mount("-o", "remount,bind,ro", place)
        ended = self.finish(self.start(builds.test_build(), ["-s"], env={"HOME": "/proc", "TMPDIR": "/proc"}, cwd="/"))
        self.assertEqual(ended.status, 1)
        self.assertIn("could not save diagnostic_results.txt", ended.messages)

    def test_the_users_mask(self):
        for mask, expected in (("077", 0o600), ("022", 0o644), ("0", 0o666), ("777", 0)):
            with self.subTest(mask):
                prefix = ["sh", "-c", f'umask {mask}; exec "$@"', "sh"]
                self.desktop_file.parent.mkdir(exist_ok=True)
                self.fail_to_submit(prefix=prefix)
                self.assertEqual(self.desktop_file.stat().st_mode & 0o777, expected)
                self.assertEqual(self.run_test_build(["-s", "-o=F"], LINES, prefix=prefix).status, 0)
                self.assertEqual((self.work / "F").stat().st_mode & 0o777, expected)
                for path in (self.desktop_file, self.work / "F"):
                    path.chmod(0o600)
                    self.assert_same_text(path.read_bytes(), REPORT)
                    path.unlink()
                self.assert_only_files(self.work, [])


class SettingTest(EnvironmentTest):
    def test_locales(self):
        """Nothing that is written depends on one, whether the machine has it or not."""
        for locale in ("C", "C.UTF-8", "tr_TR", "tr_TR.UTF-8", "xx_XX.nothing", "\u00e4/../..", "x" * 10000, ""):
            for variable in ("LC_ALL", "LANG"):
                with self.subTest(locale[:50], variable=variable):
                    env = {"LC_ALL": None, "LANG": None, variable: locale}
                    self.assert_delivered_everywhere(*self.deliver_everywhere(env=env))

    def test_time_zones(self):
        """A log line has its time in any case."""
        for zone in ("", ":", "/nowhere", ":/dev/null", "Nowhere/Never", "garbage,,,///", "XXX25:99:99", "x" * 100000,
                     "Europe/Istanbul", "<+05>-5:30", "../../etc/passwd"):
            with self.subTest(zone[:50]):
                self.assert_submission_failed(self.fail_to_submit(env={"TZ": zone}), REPORT)

    @isolation.needs_namespaces
    def test_no_time_zones_on_the_machine(self):
        nothing = self.folder / "nothing"
        nothing.mkdir()
        if not os.path.isdir("/usr/share/zoneinfo"):
            self.skipTest("this machine has none anyway")
        isolation.cover("/usr/share/zoneinfo", nothing)
        self.addCleanup(isolation.uncover, "/usr/share/zoneinfo")
        for zone in (None, "Europe/Istanbul"):
            self.assert_submission_failed(self.fail_to_submit(env={"TZ": zone}), REPORT)


class BesideTest(EnvironmentTest):
    def test_runs_that_write_the_same_file(self):
        """The file is always the whole report of one of them."""
        runs = 6
        reports = []
        started = []
        for run in range(runs):
            output = ("x" if run % 2 else "yy") * 200000 * (run + 1)
            source = self.folder / f"output-{run}"
            source.write_text(output)
            line = f"cat {source}; echo >>ready; until test $(wc -c <ready) = {runs}; do sleep 0.01; done"
            reports.append(report_text.report([(line, output)]))
            lines = self.folder / f"commands-{run}"
            lines.write_text(line + "\n")
            started.append(self.start(builds.test_build(), ["-s", "-o=F"], env={"TEST_BUILD_COMMANDS": lines}))
        written = self.work / "F"
        while any(process.poll() is None for process in started):
            if written.exists():
                self.assertIn(written.read_bytes(), reports)
        for process in started:
            ended = self.finish(process)
            self.assertEqual((ended.status, ended.stdout, ended.stderr), (0, b"outputFile=F\n", b""))
        self.assertIn(written.read_bytes(), reports)
        self.assert_only_files(self.work, ["F", "ready"])

    def test_runs_whose_upload_fails_at_the_same_time(self):
        lines = self.folder / "commands"
        lines.write_text("".join(line + "\n" for line in LINES))
        env = {"TEST_BUILD_COMMANDS": lines, "TEST_BUILD_SUBMIT_URL": "http://127.0.0.1:1/diagnosticsubmit"}
        started = [self.start(builds.test_build(), ["-s"], env=env) for _ in range(4)]
        for process in started:
            self.assert_submission_failed(self.finish(process), REPORT)
        self.assert_only_files(self.desktop_file.parent, [self.desktop_file.name])


isolation.run_tests()
