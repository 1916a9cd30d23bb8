# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs commands where a changed program can do no harm, and ends them.

A changed program may send, write or start anything: it runs without a network, where root can write nothing but an
empty folder, and in a process namespace of its own, which ends with its first process.
"""

import os
import pathlib
import signal
import subprocess
import threading

NAMESPACES = ["--net", "--mount", "--propagation", "private", "--pid", "--fork", "--kill-child", "--mount-proc"]
PLACE = pathlib.Path("/tmp")  # which the unit tests' framework writes to, whatever TMPDIR says
START = f'mount -t tmpfs none {PLACE} && cd {PLACE} && ip link set lo up && '
WRITE_PROTECT = "mount -o remount,bind,ro / && "
GO = 'ulimit -S -t "$1" && shift && { "$@"; exit $?; }'
ENDLESS = 128 + signal.SIGXCPU  # the status, as the shell reports it, of what used up its time


class NotPermitted(Exception):
    """This machine forbids namespaces."""


class Commands:
    """The commands that run now."""

    def __init__(self):
        self.running = set()
        self.lock = threading.Lock()
        self.stopped = False

    def run(self, words, limit=None, **others):
        """The exit status and the output of a command, or None and the output if it took longer than the limit."""
        with self.lock:
            if self.stopped:
                raise InterruptedError
            process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                       stderr=subprocess.STDOUT, start_new_session=True, **others)
            self.running.add(process)
        try:
            output, _ = process.communicate(timeout=limit)
            status = process.returncode
        except subprocess.TimeoutExpired:
            kill(process)
            output, _ = process.communicate()
            status = None
        finally:
            with self.lock:
                self.running.discard(process)
        if self.stopped:
            raise InterruptedError
        return status, output.decode(errors="replace")

    def stop(self):
        with self.lock:
            self.stopped = True
            for process in self.running:
                kill(process)


def kill(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def prefix(seconds):
    """The words that start a command which may write into an empty folder of its own only, and compute for so long."""
    own = [*NAMESPACES, "sh", "-c"]
    if os.geteuid() == 0:
        return ["unshare", *own, START + WRITE_PROTECT + GO, "sh", str(seconds)]
    return ["unshare", "--user", "--map-root-user", *own, START + GO, "sh", str(seconds)]


def require(commands, folder):
    """Throws NotPermitted where nothing of this folder could be started as it is."""
    if folder.is_relative_to(PLACE):
        raise NotPermitted(f"changed programs see another {PLACE}: move the sources out of it")
    status, output = commands.run([*prefix(10), "true"])
    if status != 0:
        raise NotPermitted(f"changed programs run in namespaces only, which this machine does not permit: {output}")


def environment():
    """The few variables that tests need."""
    kept = {name: os.environ[name] for name in ("PATH", "LD_LIBRARY_PATH") if name in os.environ}
    return {**kept, "HOME": str(PLACE), "TMPDIR": str(PLACE), "LC_ALL": "C.UTF-8", "PYTHONDONTWRITEBYTECODE": "1"}
