# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A lab comes, goes and leaves nothing behind, wherever it is started from, and two labs do not meet."""

import os
import pathlib
import signal
import tempfile

import labs
import lab_case


class LifeTest(lab_case.LabTest):
    def test_twice_in_a_row(self):
        for _ in range(2):
            self.assert_ran("up")
            self.assertNotEqual(lab_case.processes(), self.before["processes"])
            self.assert_ran("shell", "dig", "+short", "www.halvik.example", stdout="203.0.113.10\n")
            self.assert_ran("down")
            self.assertEqual(lab_case.what_there_is(), self.before)

    def test_a_command_without_a_lab_has_one_of_its_own(self):
        self.assert_ran("shell", "dig", "+short", "www.halvik.example", stdout="203.0.113.10\n")
        self.assertEqual(lab_case.what_there_is(), self.before)

    def test_in_a_chroot(self):
        """Commands run in the lab's root folder, not in that of the mount namespace, which has none of its files."""
        with tempfile.TemporaryDirectory() as folder:
            chroot = ["unshare", "--mount", "sh", "-ec", 'mount --rbind / "$0"; exec chroot "$0" "$@"', folder]
            for words in (["cat", "/etc/hostname"], ["--at", "web", "test", "-d", "/run/lab/machine"]):
                with self.subTest(words):
                    ended = labs.run("shell", *words, prefix=chroot)
                    self.assertEqual((ended.stderr, ended.returncode), ("", 0))

    def test_the_status_of_a_command(self):
        self.assert_ran("up")
        self.assertEqual(labs.run("shell", "sh", "-c", "exit 3").returncode, 3)
        self.assertEqual(labs.run("shell", "sh", "-c", "kill -9 $$").returncode, 128 + signal.SIGKILL)
        self.assert_ran("down")

    def test_the_working_directory_is_the_same_for_every_command(self):
        self.assert_ran("up")
        with tempfile.TemporaryDirectory() as folder:
            os.chmod(folder, 0o755)
            pathlib.Path(folder, "note").write_text("a note")
            for _ in range(2):
                self.assert_ran("shell", "cat", "note", stdout="a note", cwd=folder)
        self.assert_ran("shell", "touch", "the lab's own", cwd="/tmp")
        self.assert_ran("shell", "ls", "the lab's own", stdout="the lab's own\n", cwd="/tmp")
        self.assert_ran("down")

    def test_machines_of_an_office_have_a_program_from_below_tmp(self):
        """The servers of the lab have a /tmp of their own, which must not hide it."""
        with tempfile.TemporaryDirectory(dir="/tmp") as folder:
            os.chmod(folder, 0o755)
            program = pathlib.Path(folder, "halvik-diagnostic")
            program.write_text("#!/bin/sh\necho here\n")
            program.chmod(0o755)
            environment = {**os.environ, "HALVIK_DIAGNOSTIC": str(program)}
            self.assert_ran("--machines", "1", "up", env=environment)
            self.assert_ran("shell", "ssh", "pc-01", "/lab/program/halvik-diagnostic", stdout="here\n", env=environment)
            self.assert_ran("down")

    def test_what_is_refused(self):
        self.assert_refused(2, "there is no lab named lab", "down")
        self.assert_refused(2, "there is no lab named other", "--name", "other", "scenario", "clear")
        self.assert_refused(2, "there is no scenario fog", "scenario", "fog")
        self.assert_ran("up")
        self.assert_refused(2, "there is a lab named lab already", "up")
        self.assert_ran("down")
        self.assert_nothing_left()

    def test_only_root_has_a_lab(self):
        # Not another user of this machine, who may be unable to read root's clone.
        self.assert_refused(3, "only root can make networks", "up", prefix=["unshare", "--user", "--"])
        self.assert_nothing_left()

    def test_a_program_for_another_network_is_refused(self):
        with tempfile.NamedTemporaryFile("w", suffix=".cpp") as endpoints:
            endpoints.write('.serviceResolverA = "192.0.2.99",\n.submitUrl = "https://other.example/diagnosticsubmit"')
            endpoints.flush()
            ended = labs.run("up", env={**os.environ, "HALVIK_ENDPOINTS": endpoints.name})
        self.assertEqual(ended.returncode, 2)
        self.assertIn("the program's serviceResolverA is 192.0.2.99\n", ended.stderr)
        self.assertIn("the program's submitUrl is https://other.example/diagnosticsubmit\n", ended.stderr)

    def test_the_reason_why_a_command_line_is_wrong(self):
        for words, reason in ((["fly"], "invalid choice: 'fly'"), (["--name"], "argument --name: expected one"),
                              (["--name", "x" * 65, "up"], "no more than 64 bytes"),
                              (["shell", "--at", "nowhere", "true"], "there is no place nowhere")):
            with self.subTest(words):
                ended = labs.run(*words)
                self.assertEqual((ended.returncode, ended.stdout), (2, ""))
                self.assertIn(reason, ended.stderr.splitlines()[-1])

    def test_what_is_not_installed_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            for path, missing in (("/usr/sbin/knotd", "knotd"), ("/usr/lib/python3/dist-packages", "werkzeug")):
                without = ["unshare", "--mount", "sh", "-e", "-c", f"""
                           if [ -d {path} ]; then mount -t tmpfs none {path}
                           else touch {folder}/file; mount --bind {folder}/file {path}; fi
                           exec "$@" """, "sh"]
                with self.subTest(missing):
                    self.assert_refused(3, f"not installed: {missing}; scripts/install_packages lab", "up",
                                        prefix=without)


class PlaceTest(lab_case.LabTest):
    """Wherever a lab is started from."""

    def test_closed_standard_streams(self):
        for closing in ("<&-", ">&-", "<&- >&- 2>&-"):
            with self.subTest(closing):
                ended = labs.run("shell", "true", prefix=["sh", "-c", f'exec "$@" {closing}', "sh"])
                self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, "", ""))
        self.assert_nothing_left()

    def test_an_odd_working_directory(self):
        with tempfile.TemporaryDirectory(suffix=" \u00fc '$(id)") as folder:
            ended = labs.run("shell", "pwd", cwd=folder)
            self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, f"{folder}\n", ""))

    def test_a_working_directory_that_is_gone(self):
        with tempfile.TemporaryDirectory() as folder:
            gone = ["sh", "-c", f'cd {folder} && mkdir gone && cd gone && rmdir ../gone && exec "$@"', "sh"]
            self.assert_refused(2, "the working directory is no longer there", "shell", "pwd", prefix=gone)

    def test_no_room_for_temporary_files(self):
        copy = "/mnt"  # the lab may itself be in the folder that is covered
        for folder in ("/tmp", tempfile.gettempdir()):
            with self.subTest(folder):
                ended = labs.run("shell", "true", prefix=["unshare", "--mount", "sh", "-e", "-c", f"""
                    mount --bind {labs.FOLDER.parent} {copy}
                    mount -t tmpfs -o ro none {folder}
                    cd /
                    unset HALVIK_ENDPOINTS
                    shift
                    exec {copy}/lab/lab "$@" """, "sh"])
                self.assertEqual((ended.returncode, ended.stderr), (0, ""))


class SideBySideTest(lab_case.LabTest):
    def test_two_labs_do_not_meet(self):
        self.assert_ran("--name", "first", "up")
        self.assert_ran("--name", "second", "up")
        self.assert_ran("--name", "first", "scenario", "no-default-route")
        self.assert_ran("--name", "first", "skivra", "on")
        self.assertNotEqual(labs.run("--name", "first", "shell", "ping", "-c", "1", "8.8.8.8").returncode, 0)
        self.assertEqual(labs.run("--name", "second", "shell", "ping", "-c", "1", "8.8.8.8").returncode, 0)
        self.assertNotEqual(labs.run("--name", "second", "shell", "ls", "/Library/Application Support").returncode, 0)
        self.assert_ran("--name", "first", "down")
        self.assertEqual(labs.run("--name", "second", "shell", "ping", "-c", "1", "8.8.8.8").returncode, 0)
        self.assert_ran("--name", "second", "down")
        self.assertEqual(lab_case.what_there_is(), self.before)


labs.run_tests()
