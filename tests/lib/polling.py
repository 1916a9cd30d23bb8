# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Waiting until something is so, never for a time."""

import os
import pathlib
import re
import time

GUARD_SECONDS = 300  # ends a run that hangs, on a machine with much else to do; no test waits for it otherwise


def open_for_writing(fifo, process):
    """The writing end of a FIFO, once a command of the program has opened the other one."""
    ends = []

    def is_open():
        try:
            ends.append(os.open(fifo, os.O_WRONLY | os.O_NONBLOCK))
        except OSError:
            return False
        return True

    wait_until(is_open, f"{fifo} has a reader", process)
    return ends[0]


def thread_states(pid):
    states = {}
    for thread in os.listdir(f"/proc/{pid}/task"):
        try:
            text = pathlib.Path(f"/proc/{pid}/task/{thread}/status").read_text()
        except FileNotFoundError:
            continue  # it has just ended
        states[thread] = re.findall(r"^(?:State|\w*ctxt_switches):\s+(\w+)", text, re.MULTILINE)
    if states[str(pid)][0] == "Z":
        raise AssertionError("the program has ended")
    return states


def wait_until(condition, what, process=None):
    """Waits for something, which only this process, if there is one, can bring about: in vain once that has ended."""
    deadline = time.monotonic() + GUARD_SECONDS
    while True:
        has_ended = process and process.poll() is not None  # what it has done can be seen by now
        if condition():
            return
        if has_ended:
            raise AssertionError(f"the program has ended with {process.returncode} before {what}")
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain until {what}")
        time.sleep(0.005)


def wait_until_idle(pid):
    """Waits until nothing is left to do for a process: all of its threads sleep, and none has run between two looks."""
    looks = [None]

    def idle():
        looks.append(thread_states(pid))
        return looks[-1] == looks[-2] and all(state[0] == "S" for state in looks[-1].values())

    wait_until(idle, "the program is idle")
