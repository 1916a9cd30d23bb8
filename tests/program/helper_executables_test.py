# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The program has the libraries of the lightest run only. For a window it executes a helper in its place, and to send its
report it loads a module."""

import os
import pathlib
import resource
import shutil
import signal
import subprocess
import unittest

import builds
import http_server
import isolation
import polling
import program_tests
import report_text

WINDOW = "halvik-diagnostic-window"
UPLOAD = "halvik-upload.so"
SCRIPT = """#!/bin/sh
echo "$$ $0"
ulimit -S -n
printf '<%s>' "$@"
"""


class HelperExecutableTest(program_tests.ProgramTest):
    def setUp(self):
        super().setUp()
        self.program = self.folder / "bin/halvik-diagnostic"
        self.program.parent.mkdir()
        shutil.copy(builds.program(), self.program)

    def place(self, folder, name=WINDOW):
        """Puts a script in the place of a helper executable, below the folder of the program."""
        path = self.program.parent / folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(SCRIPT)
        path.chmod(0o755)
        return path.resolve()

    def ended(self, *options, **others):
        return self.finish(self.start(str(self.program), options, **others))

    def test_is_the_same_process_with_the_same_arguments(self):
        path = self.place("libexec")
        process = self.start(str(self.program), ["--skv", "-d=a b"])
        lines = self.finish(process).stdout.decode().splitlines()
        self.assertEqual((lines[0], lines[2]), (f"{process.pid} {path}", "<--skv><-d=a b>"))

    def test_has_the_limit_on_descriptors_that_the_program_was_started_with(self):
        self.place("libexec")
        ended = self.ended(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (123, 4567)))
        self.assertEqual(ended.stdout.splitlines()[1], b"123")

    def test_is_found_where_it_is_installed_or_beside_the_program(self):
        for folder in (".", "../libexec/halvik-diagnostic", "libexec"):
            path = self.place(folder)
            self.assertIn(str(path).encode(), self.ended().stdout.splitlines()[0])

    def test_is_found_through_a_link(self):
        path = self.place("libexec")
        (self.folder / "link").symlink_to(self.program)
        output = subprocess.run([self.folder / "link"], check=True, capture_output=True, text=True)
        self.assertIn(str(path), output.stdout.splitlines()[0])

    @isolation.needs_namespaces
    @unittest.skipUnless(builds.PLATFORM == "linux", "elsewhere, the system says it in another way")
    @unittest.skipIf(builds.is_sanitized(), "without /proc the sanitizer mistakes an error that is thrown for a fault")
    def test_is_not_looked_for_in_the_working_directory(self):
        """Where the system does not say where the program is."""
        (self.work / "libexec").mkdir()
        for path in (self.work / "libexec" / WINDOW, self.work / WINDOW):
            path.write_text(SCRIPT)
            path.chmod(0o755)
        prefix = ["unshare", "--mount", "sh", "-c", 'mount -t tmpfs none /proc && exec "$@"', "sh"]
        ended = self.ended(prefix=prefix)
        self.assertEqual((ended.status, ended.stdout), (-signal.SIGABRT, b""))
        self.assertEqual(ended.messages,
                         ["the program ends after an error: cannot tell where the program is: "
                          "No such file or directory"])

    def test_of_the_window_that_is_missing_or_cannot_be_run_is_named(self):
        self.assertEqual(self.ended().messages,
                         ["cannot open the window: No such file or directory; the option -s runs without one"])
        self.place("libexec").chmod(0o644)
        ended = self.ended()
        self.assertEqual(ended.messages, ["cannot open the window: Permission denied; the option -s runs without one"])
        self.assertEqual((ended.status, ended.stdout), (1, b""))

    @isolation.needs_namespaces
    def test_of_a_library_of_the_window_that_is_missing_its_package_is_named(self):
        library, = {line.split(" => ")[1].split(" ")[0] for line in self.libraries(f"libexec/{WINDOW}").splitlines()
                    if "libQt6Widgets.so.6 => " in line}
        empty = self.folder / "empty"
        empty.touch()
        isolation.cover(library, empty)
        self.addCleanup(isolation.uncover, library)
        ended = self.finish(self.start(builds.program(), []))
        self.assertEqual((ended.status, ended.stdout, len(ended.messages)), (1, b"", 1))
        self.assertRegex(ended.messages[0], "^cannot open the window: .*libQt6Widgets.so.6: file too short; "
                                            "install the package libqt6widgets6; the option -s runs without one$")

    def test_of_the_upload_that_is_missing_is_a_failed_upload(self):
        """The plan cannot be run here: the copy of the program that has other commands."""
        program = self.program.parent / "diagnostic_test_build"
        shutil.copy(builds.test_build(), program)
        ended = self.finish(self.start(str(program), ["-s"], env={"TEST_BUILD_SUBMIT_URL": "http://127.0.0.1:1/"}))
        self.assert_submission_failed(ended, report_text.report())
        self.assertRegex(ended.messages[0], f"^sending to http://127.0.0.1:1/ failed: .*{UPLOAD}: cannot open shared object "
                                            "file: No such file or directory$")

    def test_of_the_upload_is_found_after_the_program_was_replaced(self):
        """As by an upgrade in the middle of a run."""
        program = self.program.parent / "diagnostic_test_build"
        shutil.copy(builds.test_build(), program)
        (self.program.parent / "libexec").mkdir()
        shutil.copy(pathlib.Path(builds.program()).parent / "libexec" / UPLOAD, self.program.parent / "libexec")
        lines = self.folder / "commands"
        lines.write_text(f"cp {program} {program}.new; mv {program}.new {program}\n")
        server = http_server.Server(http_server.reply(b"url"))
        self.addCleanup(server.close)
        ended = self.finish(self.start(str(program), ["-s"], env={"TEST_BUILD_COMMANDS": lines,
                                                                  "TEST_BUILD_SUBMIT_URL": server.url()}))
        self.assertEqual((ended.status, ended.stdout, ended.stderr), (0, b"url=url\n", b""))

    def test_is_loaded_by_runs_that_upload_only(self):
        for options, is_loaded in (["-s", "-c"], False), (["-s"], True), (["-s", "-c", "-i"], True):
            with self.subTest(options):
                process = self.start_test_build(options, ["sleep 600"], submit="http://127.0.0.1:1/")
                maps = pathlib.Path(f"/proc/{process.pid}/maps")
                if is_loaded:
                    polling.wait_until(lambda: UPLOAD in maps.read_text(), "the module is loaded", process)
                else:
                    polling.wait_until(lambda: self.children_of(process.pid), "the command runs", process)
                    polling.wait_until_idle(process.pid)
                    self.assertNotIn(UPLOAD, maps.read_text())
                process.terminate()
                self.finish(process)

    def children_of(self, pid):
        return pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()

    def libraries(self, name):
        path = pathlib.Path(builds.program()).parent / name
        return subprocess.run(["ldd", path], check=True, capture_output=True, text=True).stdout

    def test_no_run_needs_the_libraries_of_another(self):
        for name in ("halvik-diagnostic", f"libexec/{UPLOAD}"):
            for library in ("libQt6", "libX11", "libGL"):
                self.assertNotIn(library, self.libraries(name))
        for name in ("halvik-diagnostic", f"libexec/{WINDOW}"):
            self.assertNotIn("libcurl", self.libraries(name))
        self.assertNotIn("libQt6Network", self.libraries(f"libexec/{WINDOW}"))

    def test_is_built_with_the_program(self):
        """Also where nothing but the program is asked for, as `scripts/run` does."""
        command = ["ninja", "-C", pathlib.Path(builds.program()).parent, "-t", "inputs", "halvik-diagnostic"]
        inputs = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
        for name in (UPLOAD, WINDOW):
            self.assertIn(f"libexec/{name}", inputs)

    def test_keeps_the_name_of_the_program(self):
        process = self.start(builds.program(), [], env={"QT_QPA_PLATFORM": "offscreen"})
        facts = pathlib.Path(f"/proc/{process.pid}")

        # In the middle of the change it has no command line at all.
        def has_changed():
            return (facts / "exe").readlink().name == WINDOW and (facts / "cmdline").read_bytes()

        polling.wait_until(lambda: process.poll() is not None or has_changed(), "the program has become its helper")
        self.assertEqual((facts / "cmdline").read_bytes().split(b"\0")[0], os.fsencode(builds.program()))
        self.assertIsNone(process.poll())


isolation.run_tests()
