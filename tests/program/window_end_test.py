# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The end of a window, and of the display that it is on."""

import signal
import threading

import isolation
import polling
import report_text
import skipping

skipping.require_tools("Xvfb", "xdotool", "xclip")
skipping.require_modules("PIL", "Xlib")
import windows
import Xlib.display
import Xlib.protocol.event
import Xlib.X


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
        self.assert_run_was_ended(server)

    def test_closing_while_the_report_is_uploaded(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.window.press("Return")
        polling.wait_until(lambda: server.requests, "the report has been received", self.process)
        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout, ended.messages), (0, b"", []))
        self.assert_only_files(self.home, [])

    def test_a_display_that_goes_away_in_the_middle_of_a_run(self):
        server = self.serve()
        self.start_commands(server)
        self.window.break_connection()
        self.assert_ended_without_display()
        self.assert_run_was_ended(server)

    def test_a_display_that_goes_away_while_the_report_is_uploaded(self):
        server = self.serve()
        self.start_upload(server)
        self.window.break_connection()
        self.assert_ended_without_display()
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report([("echo here", "here\n")]))

    def assert_ended_without_display(self):
        ended = self.finish(self.process)
        self.assertEqual((ended.status, ended.stdout), (1, b""))
        self.assertRegex(ended.messages[0], "^The X11 connection broke")
        self.assertEqual(ended.messages[1], "the program ends after an error: the connection to the display is lost")

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


class ClipboardTest(windows.WindowedTest):
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
                    self.assertRegex(ended.messages[-1], "(display|window).* the option -s,? (which )?runs without one")
                    self.assert_only_files(self.work, [])

    def test_a_wayland_that_does_not_answer_leaves_the_other_display(self):
        self.open_window(env={**self.ANY, "WAYLAND_DISPLAY": "nonsense", "XDG_SESSION_TYPE": "wayland"})
        self.assertEqual(self.close_window().status, 0)


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
