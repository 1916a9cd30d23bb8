# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The control socket of a lab, by which commands find it: an abstract Unix socket, which vanishes with the lab.

A request is a line of JSON, a list of words, and so is its answer, an object with "error" where it could not be met.
"""

import errno
import json
import re
import socket
import struct

STAY = b"stay"


class NoLab(Exception):
    """There is no lab of this name."""


class LabExists(Exception):
    """There is a lab of this name already."""


class RequestFailed(Exception):
    """The lab could not do what it was asked. The message says why."""


def _address(name):
    return f"\0halvik-lab/{name}"


def claim(name):
    """The socket on which a new lab will be found."""
    listener = socket.socket(socket.AF_UNIX)
    try:
        listener.bind(_address(name))
    except OSError as error:
        listener.close()
        if error.errno == errno.EADDRINUSE:
            raise LabExists(name) from None
        raise
    return listener


def connect(name):
    connection = socket.socket(socket.AF_UNIX)
    try:
        connection.connect(_address(name))
    except ConnectionRefusedError:
        connection.close()
        raise NoLab(name) from None
    return connection


def send(connection, message, descriptors=()):
    socket.send_fds(connection, [json.dumps(message).encode() + b"\n"], descriptors)


def receive(connection):
    """Reads one message; returns it and the descriptors that came with it."""
    text, descriptors = b"", []
    while not text.endswith(b"\n"):
        piece, more, *_ = socket.recv_fds(connection, 4096, 1)
        if not piece:
            raise ConnectionError("the other side has gone")
        text += piece
        descriptors += more
    return json.loads(text), descriptors


def request(name, *words):
    """Asks the lab of this name. Returns its answer and the descriptors that came with it."""
    try:
        with connect(name) as connection:
            send(connection, words)
            answer, descriptors = receive(connection)
    except ConnectionError:
        raise NoLab(name) from None  # it ended instead of answering
    if "error" in answer:
        raise RequestFailed(answer["error"])
    return answer, descriptors


def peer(connection):
    """The process id and the user id of the other side."""
    pid, uid, _ = struct.unpack("3i", connection.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12))
    return pid, uid


def is_from_root(connection):
    return peer(connection)[1] == 0


def pid_behind(descriptor):
    """The id, in the caller's namespace, of the process of a pid descriptor."""
    with open(f"/proc/self/fdinfo/{descriptor}", encoding="ascii") as file:
        return int(re.search(r"^Pid:\s*(\d+)", file.read(), re.MULTILINE)[1])
