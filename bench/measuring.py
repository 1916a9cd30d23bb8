# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs that bench/compare measures, and the tables of what they took."""

import os
import pathlib
import statistics
import subprocess
import sys
import time

import result_pages

REPEATED_SECONDS_MAX = 20
PACKAGES = ["findutils", "ninja-build", "parallel", "python3"]


class Cost:
    """What one run took: wall-clock seconds, processor seconds of its own and of its children, memory in bytes."""

    def __init__(self, command, environment):
        began = time.monotonic()
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   env=dict(os.environ, **environment))
        os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
        self.seconds = time.monotonic() - began
        # Of the process itself, to the nanosecond, as long as it has not been reaped.
        self.own = int(pathlib.Path(f"/proc/{process.pid}/schedstat").read_text().split()[0]) / 1e9
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            sys.exit(f"{command} ended with {process.returncode}")
        self.children = max(usage.ru_utime + usage.ru_stime - self.own, 0)
        self.memory = usage.ru_maxrss * 1024


class Runs:
    """The rounds of one way to do the work."""

    def __init__(self):
        self.costs = []

    def median(self, what="seconds"):
        return statistics.median(getattr(cost, what) for cost in self.costs)

    def least(self, what="seconds"):
        return min(getattr(cost, what) for cost in self.costs)

    def cell(self, what="seconds"):
        return f"{self.median(what):.3f} ({self.least(what):.3f})"


def compare(rounds, ways):
    """Runs each of `ways`, a name with a command and its environment, in turn."""
    results = {name: Runs() for name in ways}
    for _ in range(rounds):
        for name, (command, environment) in ways.items():
            costs = results[name].costs
            if not costs or costs[0].seconds <= REPEATED_SECONDS_MAX:
                costs.append(Cost([str(word) for word in command], environment))
    return results


printed = []  # of the subject at hand


def say(text=""):
    print(text, flush=True)
    printed.append(text + "\n")


def table(title, heads, rows):
    say(f"\n## {title}\n")
    cells = [heads, *rows]
    widths = [max(len(str(row[i])) for row in cells) for i in range(len(heads))]
    for number, row in enumerate(cells):
        say("| " + " | ".join(str(cell).ljust(width) for cell, width in zip(row, widths)) + " |")
        if number == 0:
            say("|" + "|".join("-" * (width + 2) for width in widths) + "|")


def save(subject, rounds):
    command = f"bench/compare -r {rounds} --save {subject}"
    result_pages.save(subject, f"Measured: {subject}", command, "".join(printed), PACKAGES)
