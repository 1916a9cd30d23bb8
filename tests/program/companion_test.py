# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A run without a window loads none of the window's libraries: the program goes on as its companion to open one."""

import os
import pathlib
import resource
import shutil
import subprocess

import support

COMPANION = "halvik-diagnostic-window"
SCRIPT = """#!/bin/sh
echo "$$ $0"
ulimit -S -n
printf '<%s>' "$@"
"""


class CompanionTest(support.ProgramTest):
    def setUp(self):
        super().setUp()
        self.program = self.folder / "bin/halvik-diagnostic"
        self.program.parent.mkdir()
        shutil.copy(support.program(), self.program)

    def place(self, folder):
        """Puts a script in the companion's place, below the folder of the program."""
        path = self.program.parent / folder / COMPANION
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

    def test_that_is_missing_or_cannot_be_run_is_named(self):
        self.assertEqual(self.ended().messages,
                         ["cannot open the window: No such file or directory; the option -s runs without one"])
        self.place("libexec").chmod(0o644)
        ended = self.ended()
        self.assertEqual(ended.messages, ["cannot open the window: Permission denied; the option -s runs without one"])
        self.assertEqual((ended.status, ended.stdout), (1, b""))

    def test_no_run_without_a_window_needs_it(self):
        self.assertEqual(self.ended("-h").status, 0)
        loaded = subprocess.run(["ldd", support.program()], check=True, capture_output=True, text=True).stdout
        self.assertIn("libQt6Network", loaded)
        for name in ("libQt6Gui", "libQt6Widgets", "libX11", "libGL"):
            self.assertNotIn(name, loaded)

    def test_keeps_the_name_of_the_program(self):
        process = self.start(support.program(), [], env={"QT_QPA_PLATFORM": "offscreen"})
        facts = pathlib.Path(f"/proc/{process.pid}")

        # In the middle of the change it has no command line at all.
        def has_changed():
            return (facts / "exe").readlink().name == COMPANION and (facts / "cmdline").read_bytes()

        support.wait_until(lambda: process.poll() is not None or has_changed(), "the program has become its companion")
        self.assertEqual((facts / "cmdline").read_bytes().split(b"\0")[0], os.fsencode(support.program()))
        self.assertIsNone(process.poll())


support.run_tests()
