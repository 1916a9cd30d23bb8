# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Tests of the program with its window on a screen."""

import os
import socket
import threading

import builds
import fake_desktop
import http_server
import polling
import program_tests
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
        # Two servers in different networks could both take a number for free, and a lock's file would be in the way of
        # the second one.
        self.screen = virtual_screen.Screen(options=["-nolock"])
        self.addCleanup(self.screen.close)
        self.desktop = fake_desktop.Desktop(self.folder)
        self.may_reply = threading.Semaphore(0)

    def environment(self, changes=None):
        self.folder.chmod(0o700)
        return super().environment({
            "DISPLAY": self.screen.name, "QT_QPA_PLATFORM": "xcb", "XDG_RUNTIME_DIR": self.folder,
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

    def wait_until_painted(self):
        return self.window.wait_for(lambda picture: picture.is_painted, "the window is painted")

    def start_button(self):
        """Where it is. Call this before the first run."""
        return self.wait_until_painted().start_button

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

    def close_window(self):
        """Closes the window; what is left of the program."""
        self.window.close()
        return self.finish(self.process)
