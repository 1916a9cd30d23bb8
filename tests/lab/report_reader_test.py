# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The reader of reports names the fault of each scenario from the report of a run in it, and nothing else."""

import functools
import unittest

import labs
import reader
import scenarios
from expected_findings import EXPECTED, PAIRS, expected, shows_in_a_report

# Those that wait longest begin first, so that the others fit beside them.
SLOW = ["resolver-down", "port-53-blocked", "gateway-silent", "line-down",
        "loss-and-delay", "loss-beyond-provider", "path-ends-early", "silent-city"]


def setUpModule():
    global runs
    if not reader.program().is_file():
        raise unittest.SkipTest(f"{reader.program()} is not built")
    shown = [*filter(shows_in_a_report, scenarios.SCENARIOS), *PAIRS]
    observations = {scenario: functools.partial(reader.observe, scenario) for scenario in shown}
    observations |= {name: functools.partial(reader.observe_run, name, "clear", *row)
                     for name, row in reader.CLEAR_RUNS.items()}
    runs = labs.SideBySide(dict(sorted(observations.items(), key=lambda item: not set(item[0].split("+")) & {*SLOW})))


class ReaderTest(unittest.TestCase):
    def test_the_table_has_all_scenarios(self):
        self.assertEqual(list(EXPECTED["scenarios"]), list(scenarios.SCENARIOS))

    def test_a_scenario_is_the_one_problem(self):
        for scenario in filter(shows_in_a_report, scenarios.SCENARIOS):
            with self.subTest(scenario):
                runs.check(scenario, lambda found: self.assertEqual(
                    reader.problems(found), expected(scenario), reader.text_of(found)))

    def test_two_scenarios_are_both_named(self):
        self.assertEqual(len(PAIRS), 10)
        for pair in PAIRS:
            with self.subTest(pair):
                runs.check(pair, lambda found: self.assertCountEqual(
                    reader.problems(found), expected(pair), reader.text_of(found)))

    def test_clear_is_no_problem(self):
        for name in reader.CLEAR_RUNS:
            with self.subTest(name):
                runs.check(name, lambda found: self.assertEqual(reader.text_of(found), ""))


labs.run_tests()
