# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the program makes of its command line, seen from outside: usage, run modes, output path."""

import os
import pathlib
import pwd
import signal
import urllib.parse

import endpoints
import isolation
import polling
import program_tests
import report_text


def usage(roles):
    host = urllib.parse.urlsplit(roles["submitUrl"]).hostname
    return "".join(f"{line}\n\n" for line in [
        f"-d= --domain=, A specific URL to target with tests (e.g. {roles['serviceDomain']})",
        "-s --silent, Automatically run tests in silent mode"
        " (will not show the UI or new windows; defaults to -i output)",
        f"-i --internet, Output all results to {host}; destination URL will print to console as 'url=URL'",
        "-o= --output=, Output to a file, which will print to console as 'outputFile=FILE';"
        ' can be a full path, make sure to use "quotes" if needed',
        "-c --console, Output all results to console as text",
        "--skv, Force the Skivra tests to be performed",
        "--noskv, Skip the Skivra tests even if it's installed",
        "-h --help -?, Display this usage statement",
    ])


class UsageTest(program_tests.ProgramTest):
    COMMAND_LINES = [
        ["-h"], ["--help"], ["-?"], ["-h", "-?", "--help"],
        ["-s", "-h"], ["-h", "-s", "-c"], ["-s", "-i", "-o=report.txt", "--help"],
        ["-h", "-psn_0_1"], ["-psn_0_1", "-s", "-?"], ["word", "-h"], ["--unknown", "-h"],
    ]

    def test_the_usage_text_is_all_that_happens(self):
        expected = "\n" + usage(endpoints.roles())
        for options in self.COMMAND_LINES:
            with self.subTest(options):
                ended = self.run_program(options)
                self.assertEqual(ended.messages, [expected])
                self.assertEqual(ended.stdout, b"")
                self.assertEqual(ended.status, 0)
                self.assert_only_files(self.work, [])

    def test_no_command_of_the_plan_is_started(self):
        ended = self.run_test_build(["-s", "-c", "-h"], ["touch started"])
        self.assertEqual(ended.status, 0)
        self.assertEqual(ended.stdout, b"")
        self.assert_only_files(self.work, [])

    def test_usage_that_nobody_reads_is_no_error(self):
        for options in (["-h"], ["--help"]):
            with self.subTest(options):
                reader, writer = os.pipe()
                os.close(reader)
                ended = self.run_program(options, stderr=writer)
                os.close(writer)
                self.assertEqual(ended.status, 0)


class EmptyArgumentTest(program_tests.ProgramTest):
    COMMAND_LINES = [[""], ["-h", ""], ["", "-s", "-c"], ["-s", "-c", ""], ["-s", "", "-c"]]

    def test_an_empty_argument_ends_the_program_with_a_reason(self):
        for options in self.COMMAND_LINES:
            with self.subTest(options):
                ended = self.run_test_build(options, ["touch started"])
                self.assertEqual(ended.status, -signal.SIGABRT)
                self.assertEqual(ended.stdout, b"")
                self.assertEqual(len(ended.messages), 1)
                self.assertRegex(ended.messages[0], "(?i)empty.*argument|argument.*empty")
                self.assert_only_files(self.work, [])


class OwnPathTest(program_tests.ProgramTest):
    """The program's own path, which its caller chooses, is an argument like any other."""

    def run_as(self, name, *options):
        prefix = ["bash", "-c", 'exec -a "$0" "$@"', name]
        return self.run_test_build(options, ["echo here"], prefix=prefix)

    def test_a_path_that_asks_for_the_usage(self):
        for name in ("-h", "--help", "-?"):
            with self.subTest(name):
                ended = self.run_as(name, "-s", "-c")
                self.assertIn(usage(endpoints.roles()).encode(), ended.stderr)
                self.assertEqual(ended.stdout, b"")
                self.assertEqual(ended.status, 0)

    def test_a_path_that_is_an_option(self):
        ended = self.run_as("-c", "-s")
        self.assertEqual(ended.stdout, report_text.report([("echo here", "here\n")]) + b"\n")
        self.assertEqual(ended.status, 0)
        ended = self.run_as("-o=report.txt", "-s")
        self.assertEqual(ended.stdout, b"outputFile=report.txt\n")
        self.assert_only_files(self.work, ["report.txt"])

    def test_an_empty_path(self):
        ended = self.run_as("", "-s", "-c")
        self.assertEqual(ended.status, -signal.SIGABRT)
        self.assertEqual(ended.stdout, b"")
        self.assertRegex(ended.stderr, b"(?i)empty.*argument|argument.*empty")


class RunModeTest(program_tests.ProgramTest):
    HEADLESS = [
        ["-s", "-c"], ["-c", "-s"], ["--silent", "--console"], ["-s", "-c", "-psn"], ["-ps", "-s", "-c"],
        ["-s", "-c", "-PSN_0_1"], ["-s", "-c", "-x", "--unknown=1", "word"], ["-s", "-c", "-help", "-H"],
        ["-s", "-c", "-o", "file"], ["-s", "-c", "-i=", "--internet=yes"], ["-s", "-c", "-", "--", "=", "-="],
        ["-s", "-c", "-d"], ["-s", "-c", "-s", "-c"], ["-s", "-c", "x-psn_0_1"],
    ]
    WINDOWED = [
        [], ["-c"], ["-i", "-c", "-o=report.txt", "-d=a.b", "--skv", "--noskv"], ["--silent=yes"], ["-S", "-c"],
        ["-silent", "-c"], ["s", "-c"], ["-s", "-c", "-psn_0_1"], ["-psn_0_1", "-s", "-c"], ["-s", "-c", "-psn_"],
        ["-s", "-c", "-psn_x=1"], ["-help"],
    ]

    def test_headless_runs_need_no_display(self):
        expected = report_text.report([("echo here", "here\n")]) + b"\n"
        for options in self.HEADLESS:
            with self.subTest(options):
                ended = self.run_test_build(options, ["echo here"])
                self.assertEqual(ended.stdout, expected)
                self.assertEqual(ended.stderr, b"")
                self.assertEqual(ended.status, 0)
                self.assert_only_files(self.work, [])

    def test_windowed_runs_wait_for_the_user(self):
        for options in self.WINDOWED:
            with self.subTest(options):
                process = self.start_test_build(options, ["touch started"], env={"QT_QPA_PLATFORM": "offscreen"})
                maps = pathlib.Path(f"/proc/{process.pid}/maps")
                polling.wait_until(lambda: process.poll() is not None or "libqoffscreen" in maps.read_text(),
                                   "the window system is in use")
                self.assertIsNone(process.poll(), "the program has ended by itself")
                polling.wait_until_idle(process.pid)
                process.terminate()
                ended = self.finish(process)
                self.assertEqual(ended.stdout, b"")
                self.assert_only_files(self.work, [])


class OutputPathTest(program_tests.ProgramTest):
    def run_with_output(self, *options, **others):
        return self.run_test_build(["-s", *options], ["echo here"], **others)

    def assert_saved(self, ended, path, line):
        self.assertEqual(ended.stdout, b"outputFile=" + report_text.as_bytes(line) + b"\n")
        self.assertEqual(ended.status, 0)
        self.assertEqual(ended.stderr, b"")
        with open(path, "rb") as file:
            self.assertEqual(file.read(), report_text.report([("echo here", "here\n")]))

    def test_paths(self):
        (self.work / "folder").mkdir()
        for options, name, line in [
            (["-o=report.txt"], "report.txt", "report.txt"),
            (["-o=folder/report"], "folder/report", "folder/report"),
            (["--output=./report"], "report", "./report"),
            (["-o=a=b"], "b", "b"),
            (["-o=a=b=folder/c"], "folder/c", "folder/c"),
            (["-o=first", "-o=second"], "second", "second"),
            (["--output=first", "--output=second"], "second", "second"),
            (["-o=short", "--output=long"], "long", "long"),
            (["--output=long", "-o=short"], "long", "long"),
            (["-o=", "-o=second"], "second", "second"),
            (["-o=with blank \"quote\" 'x' %s.txt"], "with blank \"quote\" 'x' %s.txt",
             "with blank \"quote\" 'x' %s.txt"),
            (["-o=m\u00fcnchen-\U0001f600"], "m\u00fcnchen-\U0001f600", "m\u00fcnchen-\U0001f600"),
            (["-o=a~"], "a~", "a~"),
            (["-o=~/report.txt"], self.home / "report.txt", f"{self.home}/report.txt"),
            (["-o=folder/~"], "folder/~", "folder/~"),
        ]:
            with self.subTest(options):
                ended = self.run_with_output(*options)
                self.assert_saved(ended, self.work / name, line)
                (self.work / name).unlink()
                self.assert_only_files(self.work, ["folder"])

    def test_a_path_is_bytes_in_any_locale(self):
        for locale in ("C", "POSIX", "C.UTF-8"):
            for name in (b"caf\xc3\xa9", b"caf\xe9-\xff"):
                with self.subTest(locale=locale, name=name):
                    ended = self.run_with_output(b"-o=" + name, env={"LC_ALL": locale})
                    self.assert_saved(ended, bytes(self.work) + b"/" + name, name)
                    os.remove(bytes(self.work) + b"/" + name)
                    self.assert_only_files(self.work, [])

    def test_an_absolute_path(self):
        path = self.folder / "report.txt"
        self.assert_saved(self.run_with_output(f"-o={path}"), path, str(path))

    def test_tilde_forms_in_a_folder_that_does_not_exist(self):
        """Nothing is written, so only the line shows which path was meant."""
        me = pwd.getpwuid(os.getuid())
        for option, env, line in [
            ("~/none/x", {}, f"{self.home}/none/x"),
            (f"~{me.pw_name}/none-halvik/x", {}, f"{me.pw_dir}/none-halvik/x"),
            ("~/none-halvik/x", {"HOME": None}, f"{me.pw_dir}/none-halvik/x"),
            ("~/none-halvik/x", {"HOME": ""}, f"{me.pw_dir}/none-halvik/x"),
            ("~no-such-user-here/x", {}, "~no-such-user-here/x"),
            ("none/~/x", {}, "none/~/x"),
            ("~", {}, str(self.home)),
        ]:
            with self.subTest(option=option, env=env):
                ended = self.run_with_output("-o=" + option, env=env)
                self.assertEqual(ended.stdout, f"outputFile={line}\n".encode())
                self.assertIn("could not save diagnostic_results.txt", ended.messages)
                self.assertEqual(ended.status, 0)
                self.assert_only_files(self.work, [])


isolation.run_tests()
