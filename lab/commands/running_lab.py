# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Finds a lab that is up, by its name."""

import pathlib
import re

import control_socket


def is_up(name):
    try:
        control_socket.connect(name).close()
    except control_socket.NoLab:
        return False
    return True


def processes(name):
    """The ids of the supervisor and of its two ancestors. The last one is the last to end."""
    with control_socket.connect(name) as connection:
        numbers = [control_socket.peer(connection)[0]]
    while len(numbers) < 3:
        try:
            status = pathlib.Path(f"/proc/{numbers[-1]}/status").read_text(encoding="utf-8")
        except (FileNotFoundError, ProcessLookupError):
            raise control_socket.NoLab(name) from None  # it is ending
        numbers.append(int(re.search(r"^PPid:\s*(\d+)", status, re.MULTILINE)[1]))
    return numbers
