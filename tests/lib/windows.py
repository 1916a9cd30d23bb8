# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Tests of the program with its window on a screen."""

import contextlib
import os
import signal
import socket
import threading

import builds
import fake_desktop
import http_server
import polling
import program_tests
import report_text
import virtual_screen

TITLE = r"Halvik Diagnostic v\d+\.\d+\.\d+"
MESSAGE_TITLE = "Halvik Diagnostic"
RESULT = b"https://results.halvik.example/r/4f2a91c07b"


class Gate:
    """Lets commands wait: each line that `waiting` returns ends when the gate is opened."""

    def __init__(self, test):
        self.path = test.folder / "gate"
        os.mkfifo(self.path)
        self.line = f"read line <{self.path}"
        self.descriptor = None
        test.addCleanup(self.open)

    def open(self):
        if self.descriptor is None:
            self.descriptor = os.open(self.path, os.O_RDWR | os.O_NONBLOCK)
            os.write(self.descriptor, b"\n" * 1024)


class WindowedTest(program_tests.ProgramTest):
    """A test with a screen of its own, on which it runs the program."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        virtual_screen.use_own_sockets()

    def setUp(self):
        super().setUp()
        self.screen = self.start_screen()
        self.addCleanup(self.screen.close)
        self.desktop = fake_desktop.Desktop(self.folder)
        self.may_reply = threading.Semaphore(0)

    def start_screen(self):
        # Two servers in different networks could both take a number for free, and a lock's file would be in the way of
        # the second one.
        return virtual_screen.Screen(options=["-nolock"])

    def screen_variables(self):
        return {"DISPLAY": self.screen.name, "QT_QPA_PLATFORM": "xcb"}

    def environment(self, changes=None):
        self.folder.chmod(0o700)
        return super().environment({
            **self.screen_variables(), "XDG_RUNTIME_DIR": self.folder,
            # Without a bus Qt's library would start one, which nobody would end.
            "DBUS_SESSION_BUS_ADDRESS": "disabled:", "PATH": f"{self.desktop.programs}:{os.environ['PATH']}",
            "XDG_DATA_HOME": self.desktop.data,
            **(changes or {})})

    def open_program(self, prefix=()):
        """Starts the program with its real plan and waits for its window."""
        if [name for _, name in socket.if_nameindex()] != ["lo"]:
            raise AssertionError("the real plan is for a network with no way out only")
        self.process = self.start(builds.program(), [], prefix=prefix)
        self.window = self.screen.wait_for_window(TITLE, self.process)

    def serve(self, *scripts):
        """A server whose n-th reply is the n-th script's, the last one for ever, as soon as `may_reply` lets it."""
        def held_back(script):
            def run(exchange):
                self.may_reply.acquire(timeout=polling.GUARD_SECONDS)
                script(exchange)
            return run

        server = http_server.Server(*map(held_back, scripts or [http_server.reply(RESULT)]))
        self.addCleanup(server.close)
        self.addCleanup(self.may_reply.release, 100)
        return server

    def open_window(self, options=(), commands=(), **others):
        """Starts the test build and waits for its window."""
        self.process = self.start_test_build(options, commands, **others)
        self.window = self.screen.wait_for_window(TITLE, self.process)

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
        self.wait_for_commands("started", self.process)

    def wait_for_commands(self, kind, process=None):
        polling.wait_until(lambda: sum(path.stat().st_size > 0 for path in self.running.glob(kind + "-*"))
                           == report_text.PLAN_LENGTH - 1, f"every command has {kind}", process)

    @staticmethod
    def end_leftovers(folder):
        for path in folder.glob("started-*"):
            if not (folder / path.name.replace("started", "ended")).exists():
                with contextlib.suppress(ProcessLookupError):
                    os.kill(int(path.read_text()), signal.SIGTERM)

    def wait_until_painted(self):
        return self.window.wait_for(lambda picture: picture.is_painted, "the window is painted")

    def finish_run(self):
        """Lets the run that has been started end, and waits until its outcome is on the screen."""
        self.window.wait_for(lambda picture: not picture.results, "the results of the run before are gone")
        self.may_reply.release()
        return self.window.wait_for(lambda picture: picture.text, "the outcome is shown")

    def finish_good_run(self):
        self.finish_run()
        return self.window.wait_for(lambda picture: picture.link, "the link is shown")

    def run_once(self):
        self.window.press("alt+s")
        return self.finish_good_run()

    def start_upload(self, server):
        """Starts a run and waits until the server has its report, but has not answered yet."""
        self.open_window(commands=["echo here"], submit=server.url())
        self.window.press("Return")
        polling.wait_until(lambda: server.requests, "the report has been received", self.process)

    def assert_run_was_ended(self, server):
        """The commands have ended, and the report has gone nowhere."""
        self.wait_for_commands("ended")
        self.assertEqual(server.connections, 0)
        self.assert_only_files(self.home, [])

    def close_window(self):
        """Closes the window; what is left of the program."""
        self.window.close()
        return self.finish(self.process)
