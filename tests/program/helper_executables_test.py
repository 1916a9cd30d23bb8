# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The program has the libraries of the lightest run only: to send its report or open a window, it becomes a helper
executable."""

import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import unittest

import builds
import isolation
import polling
import program_tests

WINDOW = "halvik-diagnostic-window"
UPLOAD = "halvik-diagnostic-upload"
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
        for name, options in ((WINDOW, ["--skv", "-d=a b"]), (UPLOAD, ["-s", "-d=a b"])):
            path = self.place("libexec", name)
            process = self.start(str(self.program), options)
            lines = self.finish(process).stdout.decode().splitlines()
            arguments = "".join(f"<{option}>" for option in options)
            self.assertEqual((lines[0], lines[2]), (f"{process.pid} {path}", arguments))

    def test_has_the_limit_on_descriptors_that_the_program_was_started_with(self):
        self.place("libexec")
        ended = self.ended(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (123, 4567)))
        self.assertEqual(ended.stdout.splitlines()[1], b"123")

    def test_is_found_where_it_is_installed_or_beside_the_program(self):
        for folder in (".", "../libexec/halvik-diagnostic", "libexec"):
            path = self.place(folder)
            self.assertIn(str(path).encode(), self.ended().stdout.splitlines()[0])

    @isolation.needs_namespaces
    @unittest.skipUnless(builds.PLATFORM == "linux", "what Qt does is its own matter")
    def test_is_found_without_proc_and_through_a_link(self):
        path = self.place("libexec")
        (self.folder / "link").symlink_to(self.program)
        script = f"mount -t tmpfs none /proc && exec {self.folder}/link"
        output = subprocess.run(["unshare", "--mount", "sh", "-c", script], check=True, capture_output=True, text=True)
        self.assertIn(str(path), output.stdout.splitlines()[0])

    @isolation.needs_namespaces
    @unittest.skipUnless(builds.PLATFORM == "linux", "what Qt does is its own matter")
    @unittest.skipIf(builds.is_sanitized(), "without /proc the sanitizer mistakes an error that is thrown for a fault")
    def test_is_not_looked_for_in_the_working_directory(self):
        """Where the system does not tell a program where it is."""
        (self.work / "libexec").mkdir()
        for path in (self.work / "libexec" / WINDOW, self.work / WINDOW):
            path.write_text(SCRIPT)
            path.chmod(0o755)
        start = ("import os, sys; "
                 "os.execve(os.open(sys.argv[1], os.O_RDONLY), ['halvik-diagnostic'], dict(os.environ))")
        prefix = ["unshare", "--mount", "sh", "-c", 'mount -t tmpfs none /proc && exec "$@"', "sh"]
        ended = self.ended(prefix=[*prefix, sys.executable, "-c", start])
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

    def test_of_the_upload_that_is_missing_is_named(self):
        ended = self.ended("-s")
        self.assertEqual(ended.messages, ["cannot upload: No such file or directory; "
                                          "the options -c and -o= deliver the report without it"])
        self.assertEqual((ended.status, ended.stdout), (1, b""))

    def test_that_sends_is_asked_for_what_is_to_be_sent_only(self):
        self.place("libexec", UPLOAD)
        for options in (["-s"], ["-s", "-i"], ["-s", "-c", "-i"], ["-s", "-o=x", "-i"], ["-s", "-o="], ["-s", "-o"]):
            with self.subTest(options):
                self.assertIn(UPLOAD.encode(), self.ended(*options).stdout)

    def test_no_run_that_neither_sends_nor_shows_anything_needs_one(self):
        self.assertEqual(self.ended("-h").status, 0)
        program = pathlib.Path(builds.program())
        of_program, of_upload = (subprocess.run(["ldd", path], check=True, capture_output=True, text=True).stdout
                                 for path in (program, program.parent / "libexec" / UPLOAD))
        if builds.PLATFORM == "linux":
            self.assertNotIn("libQt6", of_program)
        self.assertIn("libQt6Network", of_upload)
        for name in ("libQt6Gui", "libQt6Widgets", "libX11", "libGL"):
            self.assertNotIn(name, of_program + of_upload)

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
