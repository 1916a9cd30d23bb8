# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""After a failed upload: the report on the Desktop, wherever that is."""

import os
import pathlib
import pwd

import http_server
import isolation
import program_tests
import report_text

OUTPUTS = [("echo first; echo m\u00fcll >&2", "first\n", "m\u00fcll\n")]
REPORT = report_text.report(OUTPUTS)
FAILURE = "could not save diagnostic_results.txt"
FALLBACK = "could not send log, saved to Desktop"


class DesktopTest(program_tests.ProgramTest):
    def fail_to_submit(self, **others):
        submit = f"http://127.0.0.1:{http_server.unreachable_port(self)}/diagnosticsubmit"
        ended = self.run_test_build(["-s"], [line for line, *_ in OUTPUTS], submit=submit, **others)
        self.assertEqual(ended.stdout, b"")
        self.assertIn(FALLBACK, ended.messages)
        self.assertEqual(ended.status, 1)
        return ended

    def assert_saved(self, ended, path):
        self.assert_same_text(path.read_bytes(), REPORT)
        self.assert_only_files(path.parent, [path.name])
        self.assertNotIn(FAILURE, ended.messages)
        self.assertEqual(len([message for message in ended.messages if str(path) in message]), 1, ended.messages)

    def test_an_existing_folder(self):
        self.desktop_file.parent.mkdir()
        self.assert_saved(self.fail_to_submit(), self.desktop_file)

    def test_a_missing_folder_is_created(self):
        self.assert_saved(self.fail_to_submit(), self.desktop_file)

    def test_an_old_report_is_replaced(self):
        self.desktop_file.parent.mkdir()
        self.desktop_file.write_bytes(b"old" * 10000)
        self.assert_saved(self.fail_to_submit(), self.desktop_file)

    def test_a_home_that_cannot_take_it_loses_no_report(self):
        temporary = self.folder / "temporary"
        temporary.mkdir()
        temporary.chmod(0o777)

        def file_in_place_of_the_folder(home):
            (home / "Desktop").write_text("old")

        def no_permission(home):
            home.chmod(0o555)

        for prepare, prefix in ((pathlib.Path.rmdir, []), (file_in_place_of_the_folder, []),
                                (no_permission, program_tests.UNPRIVILEGED)):
            with self.subTest(prepare.__name__):
                home = self.folder / prepare.__name__
                home.mkdir()
                prepare(home)
                ended = self.fail_to_submit(env={"HOME": home, "TMPDIR": temporary}, prefix=prefix)
                [saved] = temporary.rglob("diagnostic_results.txt")
                self.assert_same_text(saved.read_bytes(), REPORT)
                self.assert_only_files(saved.parent, [saved.name])
                self.assertEqual(ended.messages[1:], [FAILURE, f"saving the report to {saved}", FALLBACK])
                self.assertEqual(saved.parent.stat().st_mode & 0o777, 0o700)
                saved.unlink()

    def test_the_desktop_environment_names_another_folder(self):
        elsewhere = self.folder / "elsewhere"
        settings = self.folder / "settings"
        home = self.home
        for entry, variables, expected in [
            ('"$HOME/Schreibtisch"', {}, home / "Schreibtisch"),
            ('"$HOME/Schreibtisch/"', {}, home / "Schreibtisch"),
            ('"$HOME/Bureau/de travail"', {}, home / "Bureau" / "de travail"),
            ('"$HOME/\u684c\u9762"', {}, home / "\u684c\u9762"),
            (f'"{elsewhere}"', {}, elsewhere),
            ('"$HOME/Schreibtisch"', {"XDG_CONFIG_HOME": settings}, home / "Schreibtisch"),
            ('"$HOME/"', {}, home / "Desktop"),
            ('"$HOME"', {}, home / "Desktop"),
            (f'"{home}"', {}, home / "Desktop"),
            (f'"{home}/"', {}, home / "Desktop"),
            ('"$HOME/."', {}, home / "Desktop"),
            ('""', {}, home / "Desktop"),
            ('"relative"', {}, home / "Desktop"),
        ]:
            with self.subTest(entry=entry, variables=variables):
                config = variables.get("XDG_CONFIG_HOME", home / ".config")
                config.mkdir(parents=True, exist_ok=True)
                (config / "user-dirs.dirs").write_text(f"# Folders of this user\nXDG_DESKTOP_DIR={entry}\n"
                                                       'XDG_DOWNLOAD_DIR="$HOME/Downloads"\n')
                self.assert_saved(self.fail_to_submit(env=variables), expected / "diagnostic_results.txt")
                (expected / "diagnostic_results.txt").unlink()
                (config / "user-dirs.dirs").unlink()
                self.assert_only_files(home, {".config", *(path.name for path in home.iterdir() if path.is_dir())})

    def assert_saved_elsewhere(self, ended, temporary):
        [saved] = temporary.rglob("diagnostic_results.txt")
        self.assert_same_text(saved.read_bytes(), REPORT)
        self.assertEqual(saved.parent.stat().st_mode & 0o777, 0o700)
        self.assertEqual(ended.messages[1:], [f"saving the report to {self.desktop_file}", FAILURE,
                                              f"saving the report to {saved}", FALLBACK])

    def test_a_folder_in_place_of_the_file_is_left_alone(self):
        temporary = self.folder / "temporary"
        temporary.mkdir()
        self.desktop_file.mkdir(parents=True)
        ended = self.fail_to_submit(env={"TMPDIR": temporary})
        self.assert_saved_elsewhere(ended, temporary)
        self.assertTrue(self.desktop_file.is_dir())
        self.assert_only_files(self.desktop_file.parent, [self.desktop_file.name])

    @isolation.needs_namespaces
    def test_a_full_home_loses_no_report(self):
        temporary = self.folder / "temporary"
        temporary.mkdir()
        isolation.mount("-t", "tmpfs", "-o", "size=4k", "none", self.home)
        self.addCleanup(isolation.uncover, self.home)
        self.desktop_file.parent.mkdir()
        (self.home / "fills it").write_bytes(b"x" * 4096)
        self.assert_saved_elsewhere(self.fail_to_submit(env={"TMPDIR": temporary}), temporary)
        self.assert_only_files(self.desktop_file.parent, [])

    @isolation.needs_namespaces
    def test_no_room_anywhere_leaves_nothing_behind(self):
        full = self.folder / "full"
        full.mkdir()
        isolation.mount("-t", "tmpfs", "-o", "size=4k", "none", full)
        self.addCleanup(isolation.uncover, full)
        (full / "Desktop").mkdir()
        (full / "temporary").mkdir()
        (full / "fills it").write_bytes(b"x" * 4096)
        ended = self.fail_to_submit(env={"HOME": full, "TMPDIR": full / "temporary"})
        self.assertEqual(ended.messages.count(FAILURE), 2)
        self.assert_only_files(full / "temporary", [])
        self.assert_only_files(full / "Desktop", [])

    @isolation.needs_namespaces
    def test_without_a_home_variable_the_account_tells(self):
        account = pwd.getpwuid(os.getuid())
        home = self.folder / "account"
        home.mkdir()
        accounts = self.folder / "passwd"
        accounts.write_text(":".join([account.pw_name, "x", str(account.pw_uid), str(account.pw_gid), "", str(home),
                                      "/bin/sh"]) + "\n")
        isolation.cover("/etc/passwd", accounts)
        self.addCleanup(isolation.uncover, "/etc/passwd")
        for value in (None, ""):
            with self.subTest(value):
                path = home / "Desktop" / "diagnostic_results.txt"
                self.assert_saved(self.fail_to_submit(env={"HOME": value}), path)
                path.unlink()
        self.assert_only_files(self.home, [])


isolation.run_tests()
