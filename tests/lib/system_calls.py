# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Makes single system calls of a program fail by user notifications of seccomp: the kernel asks us for a call's result.

Unlike with a tracer, "the 17th mmap" is one call of all threads, commands are let through once they run their own
program, and the leak checker works.
"""

import ctypes
import errno
import os
import select
import socket
import struct
import subprocess
import tempfile
import threading
import time

import seccomp

# Python's binding receives notifications only in the process that has loaded the filter, and cannot set WAIT_KILLABLE.
# Without that, a call that a signal interrupts would be stopped, and counted, twice.
_libseccomp = ctypes.CDLL("libseccomp.so.2", use_errno=True)
_libc = ctypes.CDLL(None, use_errno=True)

SET_MODE_FILTER, NEW_LISTENER, WAIT_KILLABLE = 1, 8, 32
SET_NO_NEW_PRIVILEGES = 38
CONTINUE = 1
INSTRUCTION_BYTES = 8

ARCHITECTURE = seccomp.Arch()


class FilterProgram(ctypes.Structure):
    """struct sock_fprog"""
    _fields_ = [("length", ctypes.c_ushort), ("instructions", ctypes.c_char_p)]


class Notification(ctypes.Structure):
    """struct seccomp_notif"""
    _fields_ = [("id", ctypes.c_uint64), ("thread", ctypes.c_uint32), ("flags", ctypes.c_uint32),
                ("call", ctypes.c_int32), ("architecture", ctypes.c_uint32), ("instruction", ctypes.c_uint64),
                ("arguments", ctypes.c_uint64 * 6)]


class Response(ctypes.Structure):
    """struct seccomp_notif_resp"""
    _fields_ = [("id", ctypes.c_uint64), ("value", ctypes.c_int64), ("error", ctypes.c_int32),
                ("flags", ctypes.c_uint32)]


def number_of(name):
    """The number of a system call; negative if this architecture has none of the name."""
    return seccomp.resolve_syscall(ARCHITECTURE, name)


def name_of(number):
    try:
        return seccomp.resolve_syscall(ARCHITECTURE, number).decode()
    except ValueError:
        return str(number)


def _filter(names, listed, others):
    """The instructions of a filter that does one thing with the named calls and another with the rest."""
    made = seccomp.SyscallFilter(others)
    for name in names:
        if number_of(name) >= 0:
            made.add_rule(listed, name)
    with tempfile.TemporaryFile() as file:
        made.export_bpf(file)
        file.seek(0)
        return file.read()


def _install(instructions):
    program = FilterProgram(len(instructions) // INSTRUCTION_BYTES, instructions)
    _libc.prctl(SET_NO_NEW_PRIVILEGES, 1, 0, 0, 0)
    return _libc.syscall(number_of("seccomp"), SET_MODE_FILTER, NEW_LISTENER | WAIT_KILLABLE, ctypes.byref(program))


class Call:
    """A call that has been stopped. By whom: the program, or a child of it that runs no program of its own yet."""

    def __init__(self, name, arguments, by_child):
        self.name = name
        self.arguments = arguments
        self.by_child = by_child


class Gate:
    """Stops the system calls of one program, started with `enter` as its preexec_fn, and of its descendants.

    `decide` runs in a thread of its own: it gets each call of the program, and returns the errno with which it fails,
    or 0.
    """

    def __init__(self, program, decide, stop=(), let_through=None):
        """Stops the calls named by `stop`, or, if `let_through` is given, all but those."""
        self._program = os.path.realpath(program)
        self._decide = decide
        if let_through is None:
            self._instructions = _filter(stop, listed=seccomp.NOTIFY, others=seccomp.ALLOW)
        else:
            self._instructions = _filter(let_through, listed=seccomp.ALLOW, others=seccomp.NOTIFY)
        self._request, self._response = ctypes.POINTER(Notification)(), ctypes.POINTER(Response)()
        if _libseccomp.seccomp_notify_alloc(ctypes.byref(self._request), ctypes.byref(self._response)) < 0:
            raise OSError("this machine has no user notifications of seccomp")
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
        if _install(self._instructions) < 0:
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
        _libseccomp.seccomp_notify_free(self._request, self._response)
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
                taken = _libc.syscall(number_of("pidfd_getfd"), process, place, 0)
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
        ctypes.memset(self._request, 0, ctypes.sizeof(Notification))  # the kernel takes none but an empty one
        if _libseccomp.seccomp_notify_receive(self._listener, self._request) < 0:
            if ctypes.get_errno() == errno.ENOENT:
                return  # the caller has been killed
            raise OSError(ctypes.get_errno(), "no notification of a system call")
        request, response = self._request.contents, self._response.contents
        failure = self._judge(request)
        response.id, response.value, response.error = request.id, 0, -failure
        response.flags = 0 if failure else CONTINUE
        _libseccomp.seccomp_notify_respond(self._listener, self._response)  # in vain if the caller has been killed

    def _judge(self, request):
        try:
            if os.readlink(f"/proc/{request.thread}/exe") != self._program:
                return 0
        except (FileNotFoundError, ProcessLookupError):
            return 0  # it has just ended
        by_child = not os.path.exists(f"/proc/{self._process}/task/{request.thread}")
        return self._decide(Call(name_of(request.call), list(request.arguments), by_child))


def is_permitted():
    """Whether this machine lets us stand before a program's calls."""
    try:
        gate = Gate("/bin/true", lambda call: 0)
    except OSError:
        return False
    try:
        return subprocess.run(["/bin/true"], preexec_fn=gate.enter).returncode == 0
    except (OSError, subprocess.SubprocessError):
        return False
    finally:
        gate.close()
