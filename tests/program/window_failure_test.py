# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs from the window that fail: no upload, no descriptors."""

import itertools
import os
import resource
import unittest

import builds
import http_server
import isolation
import polling
import report_text
import skipping

skipping.require_tools("Xvfb", "xdotool", "xclip")
skipping.require_modules("PIL", "Xlib")
import windows

URL = windows.RESULT.decode()


class FailureTest(windows.WindowedTest):
    OUTPUTS = [("echo first; echo m\u00fcll >&2", "first\n", "m\u00fcll\n"),
               ("head -c 2000000 /dev/zero | tr '\\0' x", "x" * 2000000)]
    LINES = [line for line, *_ in OUTPUTS]

    def assert_failed(self, picture):
        self.assertIsNone(picture.link)
        self.assertEqual(self.desktop.wait_for(1), [str(self.desktop_file)])
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report(self.OUTPUTS))

    def test_a_server_that_refuses(self):
        for status in (500, 404):
            with self.subTest(status):
                server = self.serve(http_server.reply(b"https://no.example/", status=status))
                self.open_window(commands=self.LINES, submit=server.url())
                self.window.press("Return")
                self.assert_failed(self.finish_run())
                ended = self.close_window()
                self.assertEqual((ended.status, ended.stdout), (0, b""))
                self.desktop.notes.unlink()

    def test_no_server(self):
        submit = f"http://127.0.0.1:{http_server.unreachable_port(self)}/diagnosticsubmit"
        self.open_window(commands=self.LINES, submit=submit)
        self.window.press("Return")
        self.assert_failed(self.finish_run())

    def test_the_file_is_opened_after_a_failure_only(self):
        server = self.serve(http_server.reply(windows.RESULT), http_server.reply(b"no", status=500),
                            http_server.reply(windows.RESULT))
        self.open_window(submit=server.url())
        self.run_once()
        self.window.press("alt+o")
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.assert_only_files(self.home, [])
        self.window.press("alt+s")
        self.finish_run()
        file = str(self.desktop_file)
        self.assertEqual(self.desktop.wait_for(2), [URL, file])
        # The buttons still act on the address of the run before.
        self.window.press("alt+o")
        self.assertEqual(self.desktop.wait_for(3), [URL, file, URL])
        self.desktop_file.unlink()
        self.run_once()
        self.window.press("alt+o")
        self.assertEqual(self.desktop.wait_for(4), [URL, file, URL, URL])
        self.assert_only_files(self.desktop_file.parent, [])


class ErrorTest(windows.WindowedTest):
    @unittest.skipIf(builds.is_sanitized(), "the sanitizer needs descriptors of its own")
    def test_a_run_that_has_failed_does_not_go_on_behind_the_message(self):
        server = self.serve()
        # Enough for some of the commands, whose number leaves none over, one or two.
        for descriptors in (100, 101, 102):
            with self.subTest(descriptors):
                self.open_window(commands=["echo here"], submit=server.url(),
                                 prefix=["prlimit", f"--nofile={descriptors}:{descriptors}", "--"])
                self.window.press("Return")
                message = self.screen.wait_for_window(windows.MESSAGE_TITLE, self.process)
                polling.wait_until_idle(self.process.pid)
                message.press("Return")
                ended = self.finish(self.process)
                self.assertEqual((ended.status, ended.stdout), (1, b""))
                self.assertIn("the program ends after an error: ", "".join(ended.messages))
                self.assertNotIn("saving the report", "".join(ended.messages))
                self.assertEqual(server.connections, 0)
                self.assert_only_files(self.home, [])

    @unittest.skipIf(builds.is_sanitized(), "the sanitizer needs descriptors of its own")
    def test_a_window_that_grows_when_commands_have_taken_all_descriptors(self):
        for left in (0, 1):
            with self.subTest(left=left):
                self.open_window()
                self.wait_until_painted()
                polling.wait_until_idle(self.process.pid)
                used = {int(name) for name in os.listdir(f"/proc/{self.process.pid}/fd")}
                lowest = next(number for number in itertools.count() if number not in used)
                resource.prlimit(self.process.pid, resource.RLIMIT_NOFILE, (lowest + left, lowest + left))
                self.window.resize(600, 600)
                self.assertEqual(self.close_window().status, 0)


isolation.run_tests(needs_namespaces=True)
