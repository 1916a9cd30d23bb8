# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The logs of the steps, and the summary: a line for each step, with its result and its time."""

import contextlib
import pathlib
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
LOGS = ROOT / "build/clean_room"


class Failure(Exception):
    """A step failed. The message says why."""


def say(text):
    print(f"clean_room: {text}", file=sys.stderr, flush=True)


class Summary:
    """The result and the time of each step on a release, in order."""

    def __init__(self, release):
        self._release = release
        self.lines = []
        self.failed = False

    @contextlib.contextmanager
    def step(self, title):
        """Adds a step. If it fails, the others still run."""
        title = f"{self._release}: {title}"
        say(title)
        began = time.monotonic()
        facts = []
        try:
            yield facts
            ending = "ok"
        except Failure as failure:
            ending, facts = "FAILED", [str(failure)]
            self.failed = True
        self.lines.append(f"{ending:6} {time.monotonic() - began:7.1f} s  {': '.join([title, *facts])}")
        say(self.lines[-1])
