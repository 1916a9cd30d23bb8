# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The commands of the steps, all of which a signal ends."""

import contextlib
import os
import signal
import subprocess
import threading

from check_steps import paths
from check_steps.step import Failed

RUNNING = set()  # the process groups of all commands
STARTING = threading.Lock()  # held while one is started: a signal must not find it running and unknown


def run(log, words, text=None, patient=False):
    """Runs a command to its end, with this text as its standard input, and gives its exit status. A patient one only
    runs while no test wants the processor: the lab recognises trouble by how late packets come."""
    with STARTING:
        process = subprocess.Popen([*(["chrt", "--idle", "0"] if patient else []), *map(str, words)], cwd=paths.ROOT,
                                   stdin=subprocess.DEVNULL if text is None else subprocess.PIPE, stdout=log,
                                   stderr=log, process_group=0)
        RUNNING.add(process.pid)
    process.communicate(text)
    RUNNING.discard(process.pid)
    return process.returncode


def end_all(number, _):
    """Ends all commands and this process: no further step, and no compiler that goes on."""
    STARTING.acquire()
    for group in list(RUNNING):
        with contextlib.suppress(ProcessLookupError):
            os.killpg(group, signal.SIGTERM)
    os._exit(128 + number)


def call(log, *words, patient=False):
    status = run(log, words, patient=patient)
    if status != 0:
        raise Failed(f"{words[0]} ended with status {status}")
