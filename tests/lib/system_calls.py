# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Makes single system calls of a program fail, and lets all others through.

The kernel stops every call that a filter names and asks us what is to become of it (a "user notification" of seccomp).
Unlike a tracer, we see the calls of all threads in one row, so that "the 17th mmap" is exactly one call; the commands
that the program starts are let alone as soon as they run a program of their own; and the leak checker, which refuses to
run under a tracer, still does.
"""

import contextlib
import ctypes
import errno
import fcntl
import os
import re
import select
import socket
import struct
import subprocess
import threading
import time

_libc = ctypes.CDLL(None, use_errno=True)

SET_MODE_FILTER, NEW_LISTENER, WAIT_KILLABLE = 1, 8, 32
ALLOW, NOTIFY = 0x7FFF0000, 0x7FC00000
RECEIVE, SEND, CONTINUE = 0xC0502100, 0xC0182101, 1
SET_NO_NEW_PRIVILEGES = 38


def _numbers():
    """The system's calls by name, from the headers with which the program is compiled."""
    text = subprocess.run(["c++", "-E", "-dM", "-x", "c", "-"], input="#include <asm/unistd.h>", check=True, text=True,
                          capture_output=True).stdout
    defined = dict(re.findall(r"#define (__NR\w+) (\w+)", text))
    numbers = {}
    for macro, value in defined.items():
        value = defined.get(value, value)
        if macro.startswith("__NR_") and value.isdigit():
            numbers[macro.removeprefix("__NR_")] = int(value)
    return numbers


NUMBERS = _numbers()
NAMES = {number: name for name, number in NUMBERS.items()}


def _filter(numbers, listed, others):
    def step(code, jump_true, jump_false, value):
        return struct.pack("HBBI", code, jump_true, jump_false, value)

    load, jump_if_equal, give = 0x20, 0x15, 0x06
    compare = [step(jump_if_equal, len(numbers) - place, 0, number) for place, number in enumerate(numbers)]
    return b"".join([step(load, 0, 0, 0), *compare, step(give, 0, 0, others), step(give, 0, 0, listed)])


def _install(code):
    steps = ctypes.create_string_buffer(code)
    program = ctypes.create_string_buffer(struct.pack("HxxxxxxQ", len(code) // 8, ctypes.addressof(steps)))
    _libc.prctl(SET_NO_NEW_PRIVILEGES, 1, 0, 0, 0)
    return _libc.syscall(NUMBERS["seccomp"], SET_MODE_FILTER, NEW_LISTENER | WAIT_KILLABLE, program)


class Call:
    """A call that has been stopped. By whom: the program, or a child of it that runs no program of its own yet."""

    def __init__(self, name, by_child):
        self.name = name
        self.by_child = by_child


class Gate:
    """Stands before the system calls of one program and of its descendants.

    Pass `enter` as preexec_fn. `decide` is given each call that the program makes, and answers with an errno for one
    that is to fail, or with 0. It runs in a thread of its own.
    """

    def __init__(self, program, decide, stop=(), let_through=None):
        """Stops the calls named by `stop`, or, if `let_through` is given, all but those."""
        self._program = os.path.realpath(program)
        self._decide = decide
        names, listed, others = (stop, NOTIFY, ALLOW) if let_through is None else (let_through, ALLOW, NOTIFY)
        self._code = _filter([NUMBERS[name] for name in names if name in NUMBERS], listed, others)
        self._ours, self._childs = socket.socketpair()
        self._listener = None
        self._process = None
        self._end, self._ending = os.pipe()
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def enter(self):
        """Runs in the new process, which cannot pass the descriptor on by itself: that call might be stopped."""
        place = os.dup(0)
        os.close(place)
        os.write(self._childs.fileno(), struct.pack("ii", os.getpid(), place))
        if _install(self._code) < 0:
            raise OSError(ctypes.get_errno(), "this machine permits no filter of system calls")
        self._childs.recv(1)  # until the descriptor has been taken: the next thing to come is that it is closed

    def all_ended(self, seconds):
        """Waits until the program and all that it has started are gone; False if they are not."""
        self._thread.join(seconds)
        return not self._thread.is_alive()

    def close(self):
        os.close(self._ending)
        self._thread.join()
        for descriptor in (self._end, self._listener):
            if descriptor is not None:
                os.close(descriptor)
        self._ours.close()
        self._childs.close()

    def _serve(self):
        wait = select.poll()
        wait.register(self._end, 0)
        wait.register(self._ours, select.POLLIN)
        wait.poll()
        wait.unregister(self._ours)
        if wait.poll(0) or not self._take_listener(wait):
            return
        wait.register(self._listener, select.POLLIN)
        while True:
            ready = dict(wait.poll())
            if ready.get(self._listener, 0) & select.POLLIN:
                self._answer()
            elif ready:
                return

    def _take_listener(self, wait):
        """Fetches the filter's other end out of the new process as soon as it is there; False if it never will be."""
        self._process, place = struct.unpack("ii", self._ours.recv(8))
        process = os.pidfd_open(self._process)
        try:
            while not wait.poll(0):
                taken = _libc.syscall(NUMBERS["pidfd_getfd"], process, place, 0)
                if taken >= 0:
                    self._listener = taken
                    self._ours.send(b"!")
                    return True
                if ctypes.get_errno() != errno.EBADF:
                    return False
                time.sleep(0.0002)
            return False
        finally:
            os.close(process)

    def _answer(self):
        request = bytearray(80)
        try:
            fcntl.ioctl(self._listener, RECEIVE, request)
        except FileNotFoundError:
            return  # whoever called has been killed
        number, thread, _, call = struct.unpack_from("QIIi", request)
        failure = self._judge(thread, NAMES.get(call, str(call)))
        answer = struct.pack("QqiI", number, 0, -failure, 0 if failure else CONTINUE)
        with contextlib.suppress(FileNotFoundError):
            fcntl.ioctl(self._listener, SEND, bytearray(answer))

    def _judge(self, thread, name):
        try:
            if os.readlink(f"/proc/{thread}/exe") != self._program:
                return 0
        except (FileNotFoundError, ProcessLookupError):
            return 0  # it has just ended
        return self._decide(Call(name, not os.path.exists(f"/proc/{self._process}/task/{thread}")))


def is_permitted():
    """Whether this machine lets us stand before a program's calls."""
    gate = Gate("/bin/true", lambda call: 0)
    try:
        return subprocess.run(["/bin/true"], preexec_fn=gate.enter).returncode == 0
    except (OSError, subprocess.SubprocessError):
        return False
    finally:
        gate.close()
