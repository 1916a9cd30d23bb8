# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Tables of how runs have ended."""

import collections

from failing_calls.runs import BAD, SAVED, REPORTED, WHOLE
from failing_calls.scenarios import SCENARIOS
from failing_calls.sweep import PHASES

class Tally:
    """How runs have ended: by scenario, phase, call and error."""

    VERDICTS = [WHOLE, SAVED, REPORTED, BAD]

    def __init__(self):
        self._rows = {}
        self.bad = 0
        self.not_reached = 0

    def add(self, result, phase):
        failure = result.failure
        key = (list(SCENARIOS).index(failure.scenario), PHASES.index(phase), failure.name, failure.error)
        self._rows.setdefault(key, collections.Counter())[result.verdict] += 1
        self.bad += result.verdict == BAD
        self.not_reached += not result.reached

    def table(self):
        """A row for each scenario, phase, call and error."""
        names = list(SCENARIOS)
        return self._lines("scenario | phase | call | error",
                           {f"{names[scenario]} | {PHASES[phase]} | `{name}` | {error}": row
                            for (scenario, phase, name, error), row in sorted(self._rows.items())})

    def summary(self):
        """A row for each phase and call."""
        rows, errors = {}, {}
        for (_, phase, name, error), row in self._rows.items():
            rows.setdefault((phase, name), collections.Counter()).update(row)
            errors.setdefault((phase, name), set()).add(error)
        return self._lines("phase | call | errors",
                           {f"{PHASES[phase]} | `{name}` | {', '.join(sorted(errors[phase, name]))}": row
                            for (phase, name), row in sorted(rows.items())})

    def _lines(self, head, rows):
        titles = [*head.split(" | "), "runs", *self.VERDICTS]
        lines = [" | ".join(titles), " | ".join(["---"] * (head.count("|") + 1) + ["--:"] * (len(self.VERDICTS) + 1))]
        total = sum(rows.values(), collections.Counter())
        for title, row in [*rows.items(), ("all" + " |" * head.count("|"), total)]:
            lines.append(" | ".join([title, str(row.total()), *(str(row[verdict]) for verdict in self.VERDICTS)]))
        return "\n".join(f"| {line} |" for line in lines)
