# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Pages as the program makes them, with reports of the tests' own in them."""

import copy
import functools
import json
import pathlib
import re
import subprocess

import builds
from project import ROOT

EXAMPLE = json.loads((ROOT / "tests/unit/reader/data/example.json").read_text())
DATA = re.compile(r'(<script type="application/json" id="data">)(.*?)(</script>)', re.DOTALL)

# Strings that are words of the form, and none of the report.
WORDS = {"format", "severity", "kind", "key", "id", "marks", "stateFile", "folder", "family", "answer"}


def html(report):
    """The page of a report, given as it is uploaded or saved."""
    ended = subprocess.run([builds.report_reader(), "--html"], input=report, capture_output=True)
    if ended.stderr:
        raise AssertionError(ended.stderr)
    return ended.stdout.decode()


@functools.cache
def shell():
    """A page of the program's, whatever is in it."""
    return html(b"-" * 45 + b"Results for: /usr/bin/dig +time=10 myip.halvik.example\nstdout:\n\n")


def page_of(report):
    """The program's page with another report's data in it."""
    data = json.dumps(report).translate({ord(sign): f"\\u{ord(sign):04x}" for sign in "<>&"})
    page, number = DATA.subn(lambda found: found[1] + data + found[3], shell())
    assert number == 1
    return page


def example():
    return copy.deepcopy(EXAMPLE)


def block(index, line, stdout, name="/bin/echo", **changes):
    return {"index": index, "name": name, "kind": "unknown", "key": "", "line": line, "stdout": stdout, "stdoutLine": line + 2,
            "stderr": None, "stderrLine": None, "marks": []} | changes


def empty():
    """A report of nothing, in which nothing is found."""
    report = example()
    report["verdict"] = {"text": "Nothing was found.", "problems": 0, "warnings": 0, "notes": 0}
    report["findings"] = report["blocks"] = report["missing"] = report["unread"] = []
    for name, value in report["facts"].items():
        if isinstance(value, list):
            report["facts"][name] = []
    report["facts"]["skivra"]["logs"] = []
    return report


def with_texts(value, change, key=None):
    """A report with every text in it changed."""
    if isinstance(value, dict):
        return {name: with_texts(one, change, name) for name, one in value.items()}
    if isinstance(value, list):
        return [with_texts(one, change, key) for one in value]
    return change(value) if isinstance(value, str) and key not in WORDS else value
