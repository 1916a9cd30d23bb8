# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The program with its window on a screen, used by keys."""

import os
import shutil
import unittest

import endpoints
import isolation
import plan
import polling
import report_text
import roots
import skipping

skipping.require_tools("Xvfb", "xdotool", "xclip")
skipping.require_modules("PIL", "Xlib")
import windows

URL = windows.RESULT.decode()


class RunTest(windows.WindowedTest):
    def test_from_the_fields_to_the_link(self):
        server = self.serve()
        lines = [f"echo {number}" for number in range(report_text.PLAN_LENGTH_WITH_DOMAIN)]
        self.open_window(commands=lines, submit=server.url())
        self.window.fill(account="  acme-office ", ticket="481 51", domain="www. example.com")
        self.window.press("Return")
        self.finish_good_run()
        self.assertEqual(len(server.requests), 1)
        report = server.requests[0].submitted
        head = b"Halvik account: acme-office\nHalvik ticket: 481 51\n"
        self.assertEqual(report[:len(head)], head)
        blocks = report_text.blocks(report[len(head):])
        self.assertEqual([content for _, content in blocks],
                         [f"stdout:\n{number}\n\n".encode() for number in range(len(lines))])

    def test_fields_that_stay_empty(self):
        server = self.serve()
        self.open_window(commands=["echo here"], submit=server.url())
        self.run_once()
        self.assert_same_text(server.requests[0].submitted, report_text.report([("echo here", "here\n")]))

    def test_pasted_text_of_any_script(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.screen.copy("B\u00fcro \u6771\u4eac \U0001f600".encode())
        self.window.press("alt+a", "ctrl+v")
        self.run_once()
        head = "Halvik account: B\u00fcro \u6771\u4eac \U0001f600\n---".encode()
        self.assertEqual(server.requests[0].submitted[:len(head)], head)

    def test_commands_find_the_environment_as_it_was(self):
        command = 'echo "${QT_XCB_NO_MITSHM-none}"'
        for value, printed in ((None, "none\n"), ("", "\n"), ("2", "2\n")):
            with self.subTest(value):
                server = self.serve()
                self.open_window(commands=[command], submit=server.url(), env={"QT_XCB_NO_MITSHM": value})
                self.run_once()
                self.assert_same_text(server.requests[0].submitted, report_text.report([(command, printed)]))
                self.close_window()

    def test_ten_runs_in_one_window(self):
        server = self.serve()
        runs = 10
        self.open_window(commands=[f"echo {number}" for number in range(runs * report_text.PLAN_LENGTH)],
                         submit=server.url())
        descriptors = []
        for run in range(runs):
            self.run_once()
            self.assertEqual(len(server.requests), run + 1)
            contents = [content for _, content in report_text.blocks(server.requests[run].submitted)]
            first = run * report_text.PLAN_LENGTH
            self.assertEqual(contents, [f"stdout:\n{number}\n\n".encode()
                                        for number in range(first, first + report_text.PLAN_LENGTH)])
            polling.wait_until_idle(self.process.pid)
            descriptors.append(len(os.listdir(f"/proc/{self.process.pid}/fd")))
        self.assertLessEqual(max(descriptors), descriptors[0] + 2, descriptors)
        with open(f"/proc/{self.process.pid}/task/{self.process.pid}/children") as children:
            self.assertEqual(children.read(), "")
        self.assertEqual(self.close_window().status, 0)


class KeyboardTest(windows.WindowedTest):
    def test_the_keyboard_alone_does_everything(self):
        server = self.serve()
        self.open_window(commands=["echo"] * report_text.PLAN_LENGTH_WITH_DOMAIN, submit=server.url())
        self.window.type("the account")
        self.window.press("Tab")
        self.window.type("the ticket")
        self.window.press("Tab")
        self.window.type("the.domain")
        self.window.press("Tab", "space")
        self.finish_good_run()
        report = server.requests[0].submitted
        head = b"Halvik account: the account\nHalvik ticket: the ticket\n"
        self.assertEqual(report[:len(head)], head)
        self.assertEqual(len(report_text.blocks(report[len(head):])), report_text.PLAN_LENGTH_WITH_DOMAIN)
        # From the start button on: the results, the link in them, the copy and the open button.
        self.window.press("alt+d", "Tab", "Tab", "Tab", "Return")
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.window.press("Tab", "space")
        self.screen.wait_for_clipboard(windows.RESULT)
        self.window.press("Tab", "space")
        self.assertEqual(self.desktop.wait_for(2), [URL, URL])
        self.assertEqual(len(server.requests), 1)
        self.window.press("Tab")
        self.window.type("back at the account")
        self.window.press("Return")
        self.finish_good_run()
        head = b"Halvik account: back at the account\nHalvik ticket: the ticket\n"
        self.assertEqual(server.requests[1].submitted[:len(head)], head)

    def test_return_on_a_button_presses_that_button(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.run_once()
        self.window.press("alt+d", "Tab", "Tab", "Tab", "Tab", "Return")
        self.screen.wait_for_clipboard(windows.RESULT)
        self.window.press("Tab", "Return")
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.assertEqual(len(server.requests), 1)


class OptionTest(windows.WindowedTest):
    COMMAND_LINES = [
        ["-c"], ["-i"], ["-o=F"], ["-d=x.y"], ["--skv"], ["--noskv"],
        ["-c", "-i", "-o=F", "-d=x.y", "--skv", "--noskv"],
        ["-s", "-psn_0_1"], ["-psn_0_1", "-s", "-c", "-o=F", "-d=x.y", "--skv"],
        # Qt would obey these.
        ["-title", "Another"], ["-qwindowtitle", "Another"], ["-platform", "offscreen"], ["-style", "windows"],
        ["-stylesheet", "/none"], ["-display", ":none"], ["-session", "1_2"], ["-geometry", "10x10"],
    ]

    def test_options_without_effect_on_a_window(self):
        for options in self.COMMAND_LINES:
            with self.subTest(options):
                server = self.serve()
                self.open_window(options, ["echo here"], submit=server.url())
                self.run_once()
                self.assert_same_text(server.requests[0].submitted, report_text.report([("echo here", "here\n")]))
                ended = self.close_window()
                self.assertEqual((ended.status, ended.stdout, ended.messages), (0, b"", []))
                self.assert_only_files(self.work, [])
                self.assert_only_files(self.home, [])


@unittest.skipUnless(shutil.which("dig"), "the tools of the plan are not installed")
class RealProgramTest(windows.WindowedTest):
    """The program with its real plan, on a network with no way out."""

    def test_a_whole_run(self):
        library = roots.Library(self)
        self.open_program(library.prefix)
        self.window.fill(account="acme", domain="www.example.com")
        self.window.press("Return")
        self.assertEqual(self.desktop.wait_for(1), [str(self.desktop_file)])
        self.assertIsNone(self.window.wait_for(lambda picture: picture.text, "the outcome is shown").link)
        head = b"Halvik account: acme\n"
        report = self.desktop_file.read_bytes()
        self.assertEqual(report[:len(head)], head)
        names = [name.decode() for name, _ in report_text.blocks(report[len(head):])]
        self.assertEqual(names, plan.display_names(endpoints.roles(), domain="www.example.com"))
        self.assertEqual(self.close_window().status, 0)

    def test_a_command_that_cannot_be_launched(self):
        for tool in ("/usr/bin/dig", "/usr/bin/curl"):
            with self.subTest(tool):
                (self.folder / "tool").write_text("#!/bin/sh\n")
                self.open_program(["unshare", "--mount", "sh", "-e", "-c",
                                   f'mount --bind {self.folder}/tool {tool}; exec "$@"', "sh"])
                self.window.press("Return")
                message = self.screen.wait_for_window(windows.MESSAGE_TITLE, self.process)
                self.assertIsNone(self.process.poll())
                message.press("Return")
                ended = self.finish(self.process)
                self.assertEqual((ended.status, ended.stdout), (1, b""))
                self.assertIn(tool, ended.messages[0])
                self.assertRegex(ended.messages[0], "Permission denied")
                self.assertEqual(len(ended.messages), 1)
                self.assert_only_files(self.home, [])
                self.assertEqual(self.desktop.opened, [])


isolation.run_tests(needs_namespaces=True)
