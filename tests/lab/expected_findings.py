# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The problems that halvik-report finds in the report of each scenario, as expected_findings.json lists them."""

import json
import pathlib

EXPECTED = json.loads(pathlib.Path(__file__).with_suffix(".json").read_text(encoding="utf-8"))
PAIRS = EXPECTED["pairs"]


def expected(scenario):
    """The findings of a scenario, or of several joined by "+", those of the first one first."""
    return [finding for each in scenario.split("+") for finding in EXPECTED["scenarios"][each]]


def shows_in_a_report(scenario):
    return bool(expected(scenario))
