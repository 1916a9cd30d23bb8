# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The reader of reports names the trouble of each weather from the report of a run in it, and nothing else."""

import functools
import unittest

import labs
import reader
import weathers

# Those that wait longest begin first, so that the others fit beside them.
SLOW = ["resolver-down", "port-53-blocked", "gateway-silent", "line-down",
        "loss-and-delay", "loss-beyond-provider", "path-ends-early", "silent-city"]


def setUpModule():
    global runs
    if not reader.program().is_file():
        raise unittest.SkipTest(f"{reader.program()} is not built")
    shown = [*filter(reader.shows_in_a_report, weathers.WEATHERS), *reader.PAIRS]
    observations = {weather: functools.partial(reader.observe, weather) for weather in shown}
    observations |= {name: functools.partial(reader.observe_run, name, "clear", *row)
                     for name, row in reader.CLEAR_RUNS.items()}
    runs = labs.SideBySide(dict(sorted(observations.items(), key=lambda item: not set(item[0].split("+")) & {*SLOW})))


class ReaderTest(unittest.TestCase):
    def test_the_table_has_all_weathers(self):
        self.assertEqual(list(reader.EXPECTED["weathers"]), list(weathers.WEATHERS))

    def test_a_weather_is_the_one_problem(self):
        for weather in filter(reader.shows_in_a_report, weathers.WEATHERS):
            with self.subTest(weather):
                runs.check(weather, lambda found: self.assertEqual(
                    reader.problems(found), reader.expected(weather), reader.told(found)))

    def test_two_weathers_are_both_named(self):
        self.assertEqual(len(reader.PAIRS), 10)
        for pair in reader.PAIRS:
            with self.subTest(pair):
                runs.check(pair, lambda found: self.assertCountEqual(
                    reader.problems(found), reader.expected(pair), reader.told(found)))

    def test_clear_weather_is_no_problem(self):
        for name in reader.CLEAR_RUNS:
            with self.subTest(name):
                runs.check(name, lambda found: self.assertEqual(reader.told(found), ""))


labs.run_tests()
