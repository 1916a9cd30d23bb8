# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""One step of scripts/check: how it ended, how long it took, and the tests that it counts."""

import re
import sys
import threading
import time
import xml.etree.ElementTree

from check_steps import paths


def say(text):
    print(f"check: {text}", file=sys.stderr, flush=True)


class Failed(Exception):
    """A step failed; its log has the reason."""


class Skipped(Exception):
    """A step lacks what it needs; its log names it."""


class Step:
    """One line of the table. It begins after the step that it needs, and does not where that one has failed."""

    def __init__(self, title, work, needs=None, results=None):
        self.title, self.needs, self.results = title, needs, results
        self._work = work
        self._ended = threading.Event()
        self.seconds, self.succeeded, self.skipped = 0, False, False
        self.counts = 0, 1, 0  # passed, failed and skipped tests

    def run(self):
        if self.needs:
            self.needs.wait()
        began = time.monotonic()
        path = paths.LOGS / (re.sub(r"[^a-z0-9]+", "-", self.title.lower()) + ".log")
        with open(path, "wb") as log:
            try:
                if self.needs and not self.needs.succeeded:
                    raise Failed(f"not begun, since this failed: {self.needs.title}")
                self._work(log)
                self.succeeded = True
            except Skipped:
                self.succeeded = self.skipped = True
            except Exception as failure:
                log.write(f"{failure}\n".encode())
        self.seconds = time.monotonic() - began
        self.counts = self._count()
        if not self.succeeded:
            say(f"{self.title} said, in {path.relative_to(paths.ROOT)}:\n{path.read_text(errors='replace')}")
        say(f"{self.title}: {self.ending} after {self.seconds:.0f} s")
        self._ended.set()

    def wait(self):
        self._ended.wait()

    @property
    def ending(self):
        return "skipped" if self.skipped else "done" if self.succeeded else "FAILED"

    def _count(self):
        """A step without tests counts as one, and so does one that failed before its tests could."""
        if not (self.results and self.results.exists()):
            return int(self.succeeded and not self.skipped), int(not self.succeeded), int(self.skipped)
        passed, failed, skipped = count_tests(self.results)
        return passed, failed or int(not self.succeeded), skipped


def count_tests(results):
    """The tests that passed, failed and were skipped. ctest also counts one that it could not start as skipped."""
    passed = failed = skipped = 0
    for case in xml.etree.ElementTree.parse(results).getroot().iter("testcase"):
        reason = case.find("skipped")
        if case.get("status") == "run":
            passed += 1
        elif case.get("status") == "disabled" or reason is not None and reason.get("message", "").startswith("SKIP_"):
            skipped += 1
        else:
            failed += 1
    return passed, failed, skipped
