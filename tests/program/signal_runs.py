# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs that get signals, and whether anybody is left of them."""

import ctypes
import os
import select
import signal
import subprocess

import polling
import program_tests
import report_text

ALL = report_text.PLAN_LENGTH
ENDING = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP]
WAIT = "echo >>started; exec cat"  # until standard input ends
LARGE_BYTES = 100_000_000
libc = ctypes.CDLL(None)
IGNORING = ["sh", "-c", "trap '' HUP INT QUIT; exec \"$@\"", "sh"]


def children(pid):
    """Those that have not ended."""
    listed = subprocess.run(["ps", "-o", "pid=,stat=", "--ppid", str(pid)], capture_output=True, text=True).stdout
    return [int(child) for child, state in map(str.split, listed.splitlines()) if not state.startswith("Z")]


class SignalTest(program_tests.ProgramTest):
    """The program's standard input is a pipe, which everyone whom it starts inherits and holds until the end."""

    def setUp(self):
        super().setUp()
        self.renew_input()

    def renew_input(self):
        reader, self.input = os.pipe()
        self.reader = os.fdopen(reader)
        self.addCleanup(self.reader.close)
        self.addCleanup(self.close_input)

    def close_input(self):
        """Ends what waits for its standard input to end."""
        if self.input is not None:
            os.close(self.input)
            self.input = None

    process = None  # the program, where it is a child of the test's own

    def start_run(self, options, commands, **others):
        (self.work / "started").unlink(missing_ok=True)
        self.process = self.start_test_build(options, commands, stdin=self.reader, process_group=0, **others)
        return self.process

    def wait_for_commands(self, count):
        started = self.work / "started"
        polling.wait_until(lambda: started.exists() and started.stat().st_size >= count, f"{count} commands run",
                           self.process)

    def assert_nobody_is_left(self):
        self.reader.close()
        poll = select.poll()
        poll.register(self.input, 0)
        events = poll.poll(polling.GUARD_SECONDS * 1000)
        self.assertTrue(events and events[0][1] & select.POLLERR, "somebody still holds the standard input")

    def assert_ended_by(self, process, number, stdout=b""):
        ended = self.finish(process)
        self.assertEqual((ended.status, ended.stdout, ended.stderr), (-number, stdout, b""))
        self.assert_only_files(self.home, [])
