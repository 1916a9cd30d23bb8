# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the tests of a lab's life share: what exists on the machine, and how a lab's processes are found and ended."""

import contextlib
import os
import pathlib
import re
import select
import signal
import tempfile
import time
import unittest

import labs
import polling

# Where a lab, or one of its servers, could leave something.
PLACES = ["/run", "/etc", "/var/lib/knot", "/var/lib/nginx", "/var/lib/unbound", "/var/log", "/", labs.FOLDER,
          tempfile.gettempdir()]


def processes():
    return {name for name in os.listdir("/proc") if name.isdigit()}


def what_there_is():
    """Everything that a lab has while it is up."""
    unix_sockets = pathlib.Path("/proc/net/unix").read_text()
    return {
        "processes": processes(),
        "mounts": pathlib.Path("/proc/self/mountinfo").read_text(),
        "network devices": sorted(os.listdir("/sys/class/net")),
        "sockets": re.findall(r"@halvik.*", unix_sockets),
        "files": [sorted(os.listdir(place)) for place in PLACES if os.path.isdir(place)],
    }


def find(program, *words):
    """The numbers, in order, of the processes of a program whose arguments contain these words."""
    found = []
    for number in sorted(map(int, processes())):
        try:
            first, *others = pathlib.Path(f"/proc/{number}/cmdline").read_text().split("\0")
        except OSError:
            continue  # it has just ended
        if os.path.basename(first) == program and all(any(word in other for other in others) for word in words):
            found.append(number)
    return found


def end_leftovers(before):
    """Kills what a failed test has left running: the next tests would find it, and wait for it."""
    while left := processes() - before:
        for number in left:
            with contextlib.suppress(ProcessLookupError):
                os.kill(int(number), signal.SIGKILL)
        with contextlib.suppress(ChildProcessError):
            os.waitpid(-1, os.WNOHANG)  # children that were not waited for
        time.sleep(0.01)


def kill(number):
    """Kills a process and waits until its descriptors are closed, among them the tunnels of the lab's lines."""
    descriptor = os.pidfd_open(number)
    os.kill(number, signal.SIGKILL)
    select.select([descriptor], [], [], labs.GUARD_SECONDS)
    os.close(descriptor)


class LabTest(unittest.TestCase):
    """Knows what there was before the lab, and that nothing of the lab is left."""

    maxDiff = None

    def setUp(self):
        self.before = what_there_is()
        self.addCleanup(end_leftovers, self.before["processes"])

    def assert_nothing_left(self):
        polling.wait_until(lambda: processes() == self.before["processes"], "all processes of the lab have ended")
        self.assertEqual(what_there_is(), self.before)

    def assert_ran(self, *words, stdout="", **others):
        ended = labs.run(*words, **others)
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, stdout, ""), words)

    def assert_refused(self, status, message, *words, **others):
        ended = labs.run(*words, **others)
        self.assertEqual((ended.returncode, ended.stdout), (status, ""))
        self.assertRegex(ended.stderr, f"^lab: {message}")
