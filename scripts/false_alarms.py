# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Has halvik-report read the reports of many runs in which nothing is wrong, and prints what it finds all the same.

usage: scripts/false_alarms [RUNS] [--keep FOLDER] [--at-once LABS]

  RUNS               so many runs in all (default 50), by turns with and without the Skivra and a domain
  --keep FOLDER      write the reports in which something was found to this folder
  --at-once LABS     so many labs side by side (default 4)

The programs are those of build/release, unless HALVIK_DIAGNOSTIC and HALVIK_REPORT name others. Needs root, as the lab
does. The exit status is 1 if anything was found.
"""

import argparse
import concurrent.futures
import itertools
import os
import pathlib
import sys

from project import ROOT

os.environ.setdefault("HALVIK_DIAGNOSTIC", str(ROOT / "build/release/halvik-diagnostic"))

import reader


def parse(arguments):
    parser = argparse.ArgumentParser(usage=__doc__, add_help=False)
    parser.add_argument("runs", nargs="?", type=int, default=50)
    parser.add_argument("--keep", type=pathlib.Path)
    parser.add_argument("--at-once", type=int, default=4)
    return parser.parse_args(arguments)


def run(number, kind, keep):
    """One run. Returns whether anything was found in its report."""
    report = reader.report_of(f"false alarms {os.getpid()} {number}", "clear", *reader.CLEAR_RUNS[kind])
    found = reader.findings(report)
    print(f"run {number}, {kind}: {reader.text_of(found) or 'nothing'}", flush=True)
    if found and keep:
        keep.mkdir(exist_ok=True)
        (keep / f"{number} {kind}.txt").write_bytes(report)
    return bool(found)


def main(arguments):
    options = parse(arguments)
    kinds = itertools.islice(itertools.cycle(reader.CLEAR_RUNS), options.runs)
    with concurrent.futures.ThreadPoolExecutor(options.at_once) as executor:
        alarms = list(executor.map(run, range(1, options.runs + 1), kinds, itertools.repeat(options.keep)))
    print(f"{len(alarms)} runs, {sum(alarms)} false alarms")
    return int(any(alarms))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
