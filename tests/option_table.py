# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The options as the program itself knows them: what is written in other places is held against these."""

import re
import subprocess

import builds


def signatures():
    """For each option the ways to write it, in the order of the program's own table."""
    usage = subprocess.run([builds.program(), "-h"], capture_output=True, check=True, text=True).stderr
    found = [tuple(written.split()) for written in re.findall(r"^(-\S+(?: -\S+)*), ", usage, re.MULTILINE)]
    if len(found) < 2:
        raise AssertionError(f"no table of options in the usage: {usage!r}")
    return found


def words():
    """All ways to write an option."""
    return [word for written in signatures() for word in written]
