# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Reaps processes that have lost their parent. Without it, a process namespace that was entered from outside would
never end.
"""

import ctypes
import os
import signal
import sys

PR_SET_CHILD_SUBREAPER = 36


def adopt_orphans():
    """Makes this process the parent of all its descendants that lose theirs."""
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def wait_for(child):
    """Waits for a child, and reaps all others that end before. Returns its status, negative for a signal."""
    while True:
        ended, status = os.wait()
        if ended == child:
            return os.waitstatus_to_exitcode(status)


def run_below(function):
    """Runs a function in a child, and ends with its status. If this is the first process of a namespace, all others end
    with it."""
    child = os.fork()
    if child == 0:
        sys.exit(function())
    sys.exit(abs(wait_for(child)))


def reap_for_ever():
    """For the first process of a namespace, when it has nothing else to do."""
    signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGCHLD])
    while True:
        signal.sigwait([signal.SIGCHLD])
        while _reap():
            pass


def _reap():
    try:
        return os.waitpid(-1, os.WNOHANG)[0]
    except ChildProcessError:
        return 0
