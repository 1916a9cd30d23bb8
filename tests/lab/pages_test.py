# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The pages about the lab say what its data say. This needs no lab."""

import re
import unittest

import labs
import expected_outcomes
import expected_patterns
import office_example
import scenarios

ROOT = labs.FOLDER.parent
# How the table of scenarios marks what is not usual.
MARKS = {expected_outcomes.DELIVERED: [], expected_outcomes.NOT_SENT: ["not sent"],
         expected_outcomes.NOT_CONFIRMED: ["not confirmed"]}
NEEDS = {scenarios.DOMAIN: f"`-d={labs.DOMAIN}`", scenarios.SKIVRA: "Skivra"}


def rows(page, head):
    """The cells of each row of the table that begins with this line."""
    lines = (ROOT / page).read_text(encoding="utf-8").splitlines()
    table = []
    for line in lines[lines.index(head) + 2:]:
        if not line.startswith("|"):
            break
        table.append([cell.strip() for cell in line.split("|")[1:-1]])
    return table


def blocks(page, language):
    """The page's examples in a language."""
    return re.findall(rf"^```{language}\n(.*?)^```$", (ROOT / page).read_text(encoding="utf-8"),
                      re.MULTILINE | re.DOTALL)


class ScenariosTest(unittest.TestCase):
    maxDiff = None

    def test_what_is_expected_of_each_scenario(self):
        self.assertEqual(list(expected_outcomes.OUTCOMES), list(scenarios.SCENARIOS))
        self.assertEqual(list(expected_patterns.PATTERNS), list(scenarios.SCENARIOS))

    def test_the_table_of_the_readme(self):
        expected = []
        for name, scenario in scenarios.SCENARIOS.items():
            marks = MARKS[expected_outcomes.OUTCOMES[name]] + [NEEDS[need] for need in scenario.needs]
            expected.append([f"`{name}`", scenario.summary, ", ".join(marks)])
        self.assertEqual(rows("lab/README.md", "| Scenario | What it does | Exception |"), expected)


class ManyMachinesTest(unittest.TestCase):
    maxDiff = None
    PAGE = "docs/many-machines.md"

    def test_the_commands_of_the_example(self):
        words = [office_example.START, *map(office_example.scenario_words, office_example.TROUBLES), ["shell"]]
        self.assertIn("".join(f"sudo lab/lab {' '.join(each)}\n" for each in words), "".join(blocks(self.PAGE, "sh")))

    def test_the_command_that_collects(self):
        self.assertIn(office_example.COLLECT, blocks(self.PAGE, "sh"))

    def test_the_report_of_the_example(self):
        shown, = [block for block in blocks(self.PAGE, "text") if block.startswith("Report ")]
        self.assertEqual(*map(office_example.without_uptime, (shown, office_example.REPORT)))


if __name__ == "__main__":
    unittest.main()
