# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs in the lab whose reports halvik-report reads."""

import json
import os
import pathlib
import subprocess
import tempfile

import builds
import labs

# Runs in which nothing is wrong: whether the Skivra is installed, and the options.
CLEAR_RUNS = {
    "clear": (False, []),
    "clear with a domain": (False, [f"-d={labs.DOMAIN}"]),
    "clear with the Skivra": (True, []),
    "clear with the Skivra and a domain": (True, [f"-d={labs.DOMAIN}"]),
}


def program():
    """Beside the program that writes the reports, unless HALVIK_REPORT names another."""
    return pathlib.Path(os.environ.get("HALVIK_REPORT") or pathlib.Path(builds.program()).with_name("halvik-report"))


def observe(scenario):
    """What the reader finds in the report of a run that shows a scenario."""
    options, skivra = labs.needed_options(scenario)
    return observe_run(scenario, scenario, skivra, options)


def observe_run(name, scenario, skivra, options):
    return findings(report_of(name, scenario, skivra, options))


def report_of(name, scenario, skivra, options):
    """The report of a run in a lab of its own."""
    with labs.Lab(name, scenario, skivra) as lab:
        return lab.run_program("-s", "-c", *options).stdout


def findings(report):
    """What the reader finds in a report, beginning with what matters most."""
    with tempfile.NamedTemporaryFile() as file:
        file.write(report)
        file.flush()
        ended = subprocess.run([program(), "--json", file.name], capture_output=True, timeout=labs.GUARD_SECONDS)
    if ended.returncode not in (0, 1) or ended.stderr:
        raise AssertionError(f"{program()} ended with {ended.returncode}: {ended.stderr.decode()}")
    found = json.loads(ended.stdout)["findings"]
    has_problem = any(finding["severity"] == "problem" for finding in found)
    if has_problem != (ended.returncode == 1):
        raise AssertionError(f"{program()} ended with {ended.returncode} after it had found {found}")
    return found


def problems(found):
    return [finding["id"] for finding in found if finding["severity"] == "problem"]


def text_of(found):
    """The findings and the first lines of their evidence, for a message."""
    return "\n".join(f"{finding['severity']} {finding['id']}: {finding['text']}\n" + "".join(
        f"    line {line['line']}: {line['text']}\n" for line in finding["evidence"][:3]) for finding in found)
