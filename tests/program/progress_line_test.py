# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The line that shows the progress of a run without a window on a terminal."""

import fcntl
import os
import pty
import select
import signal
import struct
import sys
import termios
import unittest

import polling
import report_text
from signal_runs import SignalTest

ALL = report_text.PLAN_LENGTH
ERASE = b"\r\x1b[K"
# Runs what follows as a job in the background of the terminal that its standard error is.
BACKGROUND = """
import fcntl, os, sys, termios
if os.fork() == 0:
    os.setsid()
    fcntl.ioctl(2, termios.TIOCSCTTY, 0)
    if os.fork() == 0:
        os.setpgid(0, 0)
        os.execv(sys.argv[1], sys.argv[1:])
sys.exit(os.waitstatus_to_exitcode(os.wait()[1]))
"""
LATER = "sleep 1; echo >>started; exec cat"  # by then a line would have been shown


class ProgressLineTest(SignalTest):
    def start_on_terminal(self, options, commands, columns=80, term="xterm", **others):
        """The run, and a file from which what it shows on the terminal is read."""
        ours, terminal = pty.openpty()
        attributes = termios.tcgetattr(terminal)
        attributes[1] &= ~termios.OPOST  # line feeds stay what they are
        termios.tcsetattr(terminal, termios.TCSANOW, attributes)
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        if others.pop("prints_there", False):
            others["stdout"] = terminal
        process = self.start_run(options, commands, env={"TERM": term}, stderr=terminal, **others)
        os.close(terminal)
        shown = os.fdopen(ours, "rb", buffering=0)
        self.addCleanup(shown.close)
        return process, shown

    def read_until(self, shown, end):
        text = b""
        while not text.endswith(end):
            if not select.select([shown], [], [], polling.GUARD_SECONDS)[0]:
                self.fail(f"waited in vain for {end} behind {text}")
            text += shown.read(1)
        return text

    def rest(self, shown):
        """What is shown until nobody has the terminal any more."""
        text = b""
        try:
            while piece := shown.read(65536):
                text += piece
        except OSError:  # the terminal's way to say so
            pass
        return text

    def test_it_says_what_the_run_waits_for(self):
        process, shown = self.start_on_terminal(["-s", "-c"], ["exec cat # host.example"] + ["true"] * (ALL - 1))
        start = ERASE + f"{ALL - 1} of {ALL} tests finished, ".encode()
        text = self.read_until(shown, start) + self.read_until(shown, b"\r")
        self.assertRegex(text[text.index(start) + len(start):], rb"^\d+ s; waiting for: sh exec cat # host\.example\r$")
        self.close_input()
        self.assertEqual(self.rest(shown)[-len(ERASE):], ERASE)
        self.assertEqual(process.wait(), 0)

    def test_it_fits_the_terminal_and_holds_nothing_that_one_obeys(self):
        _, shown = self.start_on_terminal(["-s", "-c"], ["exec cat # a.b\x1b[31m\u00e9" + "x" * 50] * 2, columns=79)
        self.read_until(shown, ERASE)
        line = self.read_until(shown, ERASE)[:-len(ERASE)]
        self.assertEqual(len(line), 78)
        self.assertRegex(line, rb"^[ -~]*sh exec cat # a\.b\?\[31m\?\?x*\.\.\.$")

    def test_nothing_is_left_of_it_behind_the_report(self):
        process, shown = self.start_on_terminal(["-s", "-c"], ["exec cat; :"], prints_there=True)
        self.read_until(shown, b"waiting for")
        self.close_input()
        text = self.rest(shown)
        report = text[text.rindex(ERASE) + len(ERASE):]
        self.assertEqual(report, report_text.report([("exec cat; :",)]) + b"\n")
        self.assertEqual(process.wait(), 0)

    def test_a_message_takes_its_place(self):
        process, shown = self.start_on_terminal(["-s"], ["exec cat"], columns=200)
        self.read_until(shown, b"waiting for")
        self.close_input()
        self.assertRegex(self.rest(shown), rb"\r\x1b\[K\d{4}-[^\r]*could not send log, saved to Desktop\n$")
        self.assertEqual(process.wait(), 1)

    def test_a_signal_erases_it(self):
        process, shown = self.start_on_terminal(["-s", "-c"], ["exec cat"])
        self.read_until(shown, b"waiting for")
        process.terminate()
        self.assertEqual(process.wait(), -signal.SIGTERM)
        self.assertEqual(self.rest(shown)[-len(ERASE):], ERASE)

    def assert_nothing_is_shown(self, process, shown):
        self.wait_for_commands(1)
        polling.wait_until_idle(process.pid)
        self.close_input()
        self.assertEqual(self.rest(shown), b"")
        self.assertEqual(process.wait(), 0)

    def test_a_terminal_that_rewrites_no_line(self):
        for term in ("dumb", None):
            with self.subTest(term):
                self.renew_input()
                self.assert_nothing_is_shown(*self.start_on_terminal(["-s", "-c"], [LATER], term=term))

    def test_a_job_in_the_background(self):
        prefix = [sys.executable, "-c", BACKGROUND]
        self.assert_nothing_is_shown(*self.start_on_terminal(["-s", "-c"], [LATER], prefix=prefix))

    def test_standard_error_that_is_no_terminal(self):
        reader, writer = os.pipe()
        process = self.start_run(["-s", "-c"], [LATER], env={"TERM": "xterm"}, stderr=writer)
        os.close(writer)
        with os.fdopen(reader, "rb") as shown:
            self.assert_nothing_is_shown(process, shown)


if __name__ == "__main__":
    unittest.main()
