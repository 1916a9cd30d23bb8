# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The program with its window on a screen, used by keys and mouse."""

import contextlib
import errno
import itertools
import os
import resource
import shutil
import signal
import threading
import unittest

import builds
import endpoints
import http_server
import isolation
import plan
import polling
import report_text
import roots
import skipping

skipping.require_tools("Xvfb", "xdotool", "xclip")
try:
    import system_calls
    import windows
except ModuleNotFoundError as error:
    skipping.skip_file(f"not installed: the Python module {error.name}")

import Xlib.display
import Xlib.X
import Xlib.protocol.event

URL = windows.RESULT.decode()


class RunTest(windows.WindowedTest):
    def test_from_the_fields_to_the_link(self):
        server = self.serve()
        lines = [f"echo {number}" for number in range(57)]
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
                         [f"stdout:\n{number}\n\n".encode() for number in range(57)])

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

    def test_return_in_each_field_and_the_start_button_start(self):
        server = self.serve()
        self.open_window(submit=server.url())
        start = self.start_button()
        self.window.click(start)
        self.finish_good_run()
        for number, field in enumerate(["account", "ticket", "domain"], 2):
            self.window.press("alt+" + field[0], "Return")
            self.finish_good_run()
            self.assertEqual(len(server.requests), number)
        self.window.click(start)
        self.finish_good_run()
        self.assertEqual(len(server.requests), 5)

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

    def test_while_a_run_goes_on_nothing_starts_another(self):
        server = self.serve()
        gate = windows.Gate(self)
        started = self.folder / "started"
        line = f"echo >>{started}; {gate.line}"
        self.open_window(commands=[line] * (2 * report_text.PLAN_LENGTH), submit=server.url())
        start = self.start_button()
        self.window.press("Return")
        polling.wait_until(lambda: started.exists() and started.stat().st_size == report_text.PLAN_LENGTH,
                           "all commands have started", self.process)
        self.window.press("Return", "alt+s", "alt+a", "Return", "Tab", "Return", "space")
        self.window.click(start)
        gate.open()
        self.finish_good_run()
        self.window.press("alt+o")
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.assertTrue(self.window.picture().results)
        self.assertEqual(len(server.requests), 1)
        self.assertEqual(started.stat().st_size, report_text.PLAN_LENGTH)

    def test_escape_changes_nothing(self):
        server = self.serve()
        gate = windows.Gate(self)
        self.open_window(commands=[gate.line], submit=server.url())
        start = self.start_button()
        self.window.press("Escape")
        self.window.fill(account="acme")
        self.window.press("Escape", "Return")
        self.window.wait_for(lambda picture: picture.reaches_below(start), "the progress is shown")
        self.window.press("Escape")
        gate.open()
        self.finish_good_run()
        self.window.press("Escape", "alt+o")
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.assertTrue(server.requests[0].submitted.startswith(b"Halvik account: acme\n---"))
        self.assertIsNone(self.process.poll())


class KeyboardTest(windows.WindowedTest):
    def test_the_keyboard_alone_does_everything(self):
        server = self.serve()
        self.open_window(commands=["echo"] * 57, submit=server.url())
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
        self.assertEqual(len(report_text.blocks(report[len(head):])), 57)
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


class LinkTest(windows.WindowedTest):
    def test_the_copy_button(self):
        for reply in (windows.RESULT, windows.RESULT + b"\n", "https://r.example/\u00e4?b=1&c=%20#d".encode()):
            with self.subTest(reply):
                server = self.serve(http_server.reply(reply))
                self.open_window(submit=server.url())
                self.screen.copy(b"of another program")
                copy, _ = self.run_once().link_buttons
                self.window.click(copy)
                self.screen.wait_for_clipboard(reply)
                polling.wait_until_idle(self.process.pid)
                self.assertEqual(self.screen.clipboard(), reply)
                self.assertEqual(self.desktop.opened, [])
                self.assertEqual(self.close_window().status, 0)

    def test_a_clipboard_manager_keeps_the_link(self):
        server = self.serve()
        self.open_window(submit=server.url())
        manager = ClipboardManager(self.screen.name)
        self.run_once()
        self.window.press("alt+c")
        polling.wait_until(lambda: manager.is_clipboard_owned(), "the link is copied", self.process)
        self.assertEqual(self.close_window().status, 0)
        manager.finish()
        self.assertEqual(manager.saved, windows.RESULT)

    def test_the_open_button_and_links_go_to_the_desktop(self):
        server = self.serve(http_server.reply(windows.RESULT + b"\n"))
        self.open_window(submit=server.url())
        picture = self.run_once()
        _, open_button = picture.link_buttons
        self.window.click(open_button)
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.window.click(picture.link)
        self.assertEqual(self.desktop.wait_for(2), [URL] * 2)
        self.window.press("alt+d", "Tab", "Tab", "Tab", "Return")
        self.assertEqual(self.desktop.wait_for(3), [URL] * 3)
        self.window.press("alt+o")
        self.assertEqual(self.desktop.wait_for(4), [URL] * 4)

    def test_results_can_be_selected_and_copied(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.screen.copy(b"of another program")
        self.window.click(self.run_once().results)
        self.window.press("ctrl+a", "ctrl+c")
        self.screen.wait_for_clipboard(b"See results at " + windows.RESULT)

    def test_addresses_are_handed_on_as_they_are(self):
        for address, opened in (
            ("https://r.example/a?b=1&c=%20d;e='f'#g", None),
            ("https://r.example/" + "x" * 2000, None),
            ("https://r.example/x%20", None),
            ("https://r.example/?q=a%20", None),
            ("https://r.example/%C2%A0", None),
            ("https://r.example/a|b", "https://r.example/a%7Cb"),
        ):
            with self.subTest(address):
                server = self.serve(http_server.reply(address.encode()))
                self.open_window(submit=server.url())
                before = len(self.desktop.opened)
                picture = self.run_once()
                self.window.press("alt+o")
                self.window.click(picture.link)
                self.assertEqual(self.desktop.wait_for(before + 2)[before:], [opened or address] * 2)
                self.assertEqual(self.close_window().status, 0)


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


class EndTest(windows.WindowedTest):
    def test_closing_an_idle_window(self):
        self.open_window()
        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout, ended.messages), (0, b"", []))

    def test_closing_after_a_run(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.run_once()
        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout, ended.messages), (0, b"", []))

    def test_closing_in_the_middle_of_a_run_ends_its_commands(self):
        server = self.serve()
        self.start_commands(server)
        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout, ended.messages), (0, b"", []))
        self.wait_for_commands("ended")
        self.assertEqual(server.connections, 0)
        self.assert_only_files(self.home, [])

    def start_commands(self, server):
        """Opens a window and starts a run in it, whose commands run until they are asked to end."""
        folder = self.running = self.folder / "commands-running"
        folder.mkdir()
        # What the shell complains of, when it is asked twice, would meet a pipe that nobody reads any more.
        line = (f"trap 'kill $waiting 2>/dev/null; echo >{folder}/ended-$$; exit' TERM; sleep 1000 & waiting=$!; "
                f"echo $waiting >{folder}/started-$$; wait")
        self.addCleanup(self.end_leftovers, folder)
        self.open_window(commands=[line] * (report_text.PLAN_LENGTH - 1), submit=server.url())
        self.window.press("Return")
        self.wait_for_commands("started")

    def wait_for_commands(self, kind):
        polling.wait_until(lambda: sum(path.stat().st_size > 0 for path in self.running.glob(kind + "-*"))
                           == report_text.PLAN_LENGTH - 1, f"every command has {kind}")

    @staticmethod
    def end_leftovers(folder):
        for path in folder.glob("started-*"):
            if not (folder / path.name.replace("started", "ended")).exists():
                with contextlib.suppress(ProcessLookupError):
                    os.kill(int(path.read_text()), signal.SIGTERM)

    def test_closing_while_the_report_is_uploaded(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.window.press("Return")
        polling.wait_until(lambda: server.requests, "the report has been received", self.process)
        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout, ended.messages), (0, b"", []))
        self.assert_only_files(self.home, [])

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
                self.start_button()
                polling.wait_until_idle(self.process.pid)
                used = {int(name) for name in os.listdir(f"/proc/{self.process.pid}/fd")}
                lowest = next(number for number in itertools.count() if number not in used)
                resource.prlimit(self.process.pid, resource.RLIMIT_NOFILE, (lowest + left, lowest + left))
                self.window.resize(600, 600)
                self.assertEqual(self.close_window().status, 0)

    @unittest.skipIf(builds.PLATFORM == "posix", "commands are started by the same call")
    def test_no_thread_to_look_for_a_proxy_with(self):
        refusals = []
        gate = system_calls.Gate(builds.test_build(), lambda call: errno.EAGAIN if refusals else 0, stop=["clone3"])
        self.addCleanup(gate.close)
        self.open_window(commands=["echo here"], submit="http://diagnostic.halvik.example/diagnosticsubmit",
                         preexec_fn=gate.enter)
        polling.wait_until_idle(self.process.pid)
        refusals.append(errno.EAGAIN)
        self.window.press("Return")
        self.screen.wait_for_window(windows.MESSAGE_TITLE, self.process).press("Return")
        ended = self.finish(self.process)
        self.assertEqual((ended.status, ended.stdout), (1, b""))
        self.assertRegex(ended.messages[0], "an error: QThread::start: .*Resource temporarily unavailable")
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report([("echo here", "here\n")]))

    def test_a_display_that_goes_away_in_the_middle_of_a_run(self):
        server = self.serve()
        self.start_commands(server)
        self.window.break_connection()
        self.assert_ended_without_display()
        self.wait_for_commands("ended")
        self.assertEqual(server.connections, 0)
        self.assert_only_files(self.home, [])

    def test_a_display_that_goes_away_while_the_report_is_uploaded(self):
        server = self.serve()
        self.open_window(commands=["echo here"], submit=server.url())
        self.window.press("Return")
        polling.wait_until(lambda: server.requests, "the report has been received", self.process)
        self.window.break_connection()
        self.assert_ended_without_display()
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report([("echo here", "here\n")]))

    def assert_ended_without_display(self):
        ended = self.finish(self.process)
        self.assertEqual((ended.status, ended.stdout), (1, b""))
        self.assertRegex(ended.messages[0], "^the program ends after an error: The X11 connection broke")

    def test_a_display_that_is_mute_when_the_window_is_closed(self):
        server = self.serve()
        self.open_window(submit=server.url())
        manager = SilencingManager(self.screen)
        self.addCleanup(self.screen.server.send_signal, signal.SIGCONT)
        self.run_once()
        self.window.press("alt+c")
        polling.wait_until(lambda: manager.is_clipboard_owned(), "the link is copied", self.process)
        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout), (0, b""))
        manager.finish()


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


class DisplayTest(windows.WindowedTest):
    ANY = {"QT_QPA_PLATFORM": None}

    def test_without_a_display_a_line_says_so(self):
        for env in ({"DISPLAY": None}, {"DISPLAY": ""}, {"DISPLAY": ":nonexistent"},
                    {"DISPLAY": None, "WAYLAND_DISPLAY": "nonsense"},
                    {"DISPLAY": None, "WAYLAND_DISPLAY": "nonsense", "XDG_SESSION_TYPE": "wayland"},
                    {"DISPLAY": None, "QT_QPA_PLATFORM": "xcb"}, {"DISPLAY": None, "QT_QPA_PLATFORM": ""},
                    {"QT_QPA_PLATFORM": "nonsense"}):
            for options in ([], ["-c", "-o=F"], ["-s", "-psn_0_1"]):
                with self.subTest(env=env, options=options):
                    ended = self.run_test_build(options, ["touch started"], env={**self.ANY, **env})
                    self.assertEqual(ended.status, 1)
                    self.assertEqual(ended.stdout, b"")
                    self.assertRegex(ended.messages[-1], "(display|window).* the option -s runs without one")
                    self.assert_only_files(self.work, [])

    def test_a_wayland_that_does_not_answer_leaves_the_other_display(self):
        self.open_window(env={**self.ANY, "WAYLAND_DISPLAY": "nonsense", "XDG_SESSION_TYPE": "wayland"})
        self.assertEqual(self.close_window().status, 0)

    def test_without_a_thread_to_paint_with_a_line_says_so(self):
        gate = system_calls.Gate(builds.test_build(), lambda call: errno.EAGAIN, stop=["clone3"])
        self.addCleanup(gate.close)
        ended = self.run_test_build([], ["touch started"], preexec_fn=gate.enter)
        self.assertEqual((ended.status, ended.stdout), (1, b""))
        self.assertRegex(ended.messages[-2], "an error: QThread::start: .*Resource temporarily unavailable")
        self.assertRegex(ended.messages[-1], "the window cannot be opened; the option -s runs without one")
        self.assert_only_files(self.work, [])


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


class ClipboardManager:
    """A program of the desktop that keeps what was copied when its owner ends and asks for that."""

    def __init__(self, screen_name):
        self.saved = None
        self.display = Xlib.display.Display(screen_name)
        self.atom = self.display.intern_atom
        self.window = self.display.screen().root.create_window(0, 0, 1, 1, 0, Xlib.X.CopyFromParent)
        self.window.set_selection_owner(self.atom("CLIPBOARD_MANAGER"), Xlib.X.CurrentTime)
        self.display.sync()
        self.watcher = Xlib.display.Display(screen_name)
        self.thread = threading.Thread(target=self._save_when_asked, daemon=True)
        self.thread.start()

    def is_clipboard_owned(self):
        return self.watcher.get_selection_owner(self.watcher.intern_atom("CLIPBOARD")) != Xlib.X.NONE

    def finish(self):
        self.thread.join(polling.GUARD_SECONDS)
        self.watcher.close()

    def _save_when_asked(self):
        request = self._next(Xlib.X.SelectionRequest)
        if request.target == self.atom("SAVE_TARGETS"):
            text = self.atom("UTF8_STRING")
            self.window.convert_selection(self.atom("CLIPBOARD"), text, text, Xlib.X.CurrentTime)
            self._next(Xlib.X.SelectionNotify)
            self.saved = bytes(self.window.get_full_property(text, Xlib.X.AnyPropertyType).value)
        request.requestor.send_event(Xlib.protocol.event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection, target=request.target,
            property=request.property))
        self.display.close()

    def _next(self, kind):
        while True:
            event = self.display.next_event()
            if event.type == kind:
                return event


class SilencingManager(ClipboardManager):
    """Stops the display as soon as the program, which is about to end, asks for something."""

    def __init__(self, screen):
        self.screen = screen
        super().__init__(screen.name)

    def _save_when_asked(self):
        self._next(Xlib.X.SelectionRequest)
        self.screen.server.send_signal(signal.SIGSTOP)
        self.display.close()


isolation.run_tests(needs_namespaces=True)
