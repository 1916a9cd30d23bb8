# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Finds a lab that is up, by its name."""

import pathlib
import re

import rendezvous


def is_up(name):
    try:
        rendezvous.connect(name).close()
    except rendezvous.NoLab:
        return False
    return True


def processes(name):
    """The ids of the supervisor and of its two ancestors. The last one is the last to end."""
    with rendezvous.connect(name) as connection:
        numbers = [rendezvous.peer(connection)[0]]
    while len(numbers) < 3:
        try:
            status = pathlib.Path(f"/proc/{numbers[-1]}/status").read_text(encoding="utf-8")
        except (FileNotFoundError, ProcessLookupError):
            raise rendezvous.NoLab(name) from None  # it is ending
        numbers.append(int(re.search(r"^PPid:\s*(\d+)", status, re.MULTILINE)[1]))
    return numbers
