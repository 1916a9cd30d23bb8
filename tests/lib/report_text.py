# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The report that a run of the test build is expected to make, and the blocks of any report."""

import re

import endpoints
import plan

# Commands of a run without a domain and without the Skivra section, and of one with a domain.
PLAN_LENGTH = len(plan.display_names(endpoints.roles()))
PLAN_LENGTH_WITH_DOMAIN = len(plan.display_names(endpoints.roles(), domain="a.domain"))
SEPARATOR = b"-" * 45


def as_bytes(text):
    return text if isinstance(text, bytes) else text.encode()


def block(name, stdout=b"", stderr=b""):
    """One command's part of the report."""
    text = SEPARATOR + b"Results for: " + as_bytes(name) + b"\n"
    for label, output in ((b"stdout:\n", stdout), (b"stderr:\n", stderr)):
        if output:
            text += label + as_bytes(output) + b"\n"
    return text


def report(outputs=()):
    """The report of a run of the test build.

    outputs holds, for each of the first commands, its line and what it prints, as (line, stdout) or (line, stdout,
    stderr); the comments are the plan's.
    """
    comments = plan.comments(endpoints.roles())
    outputs = list(outputs) + [(":",)] * (PLAN_LENGTH - len(outputs))
    return b"".join(block(b"/bin/sh -c " + as_bytes(line) + as_bytes(comment), *printed)
                    for (line, *printed), comment in zip(outputs, comments, strict=True))


def blocks(text):
    """The display names and the contents of a report's blocks, in order."""
    head, *rest = re.split(rb"^" + SEPARATOR + rb"Results for: ", text, flags=re.MULTILINE)
    if head:
        raise AssertionError(f"the report begins with {head[:200]!r}")
    return [tuple(part.partition(b"\n")[::2]) for part in rest]
