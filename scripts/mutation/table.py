# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What scripts/mutate prints."""

import collections

from mutation import trial


def describe(mutant):
    head = f"{mutant.file}:{mutant.line}: {mutant.kind} in {mutant.function}"
    return f"{head}\n  - {mutant.before}\n  + {mutant.after}"


def totals(outcomes, seconds):
    """A row for each file, one for each kind of change, one for all, and the share of what the tests noticed."""
    by_file, by_kind, all_of_them = {}, {}, collections.Counter()
    for mutant, outcome in outcomes:
        for counts in (by_file.setdefault(mutant.file, collections.Counter()),
                       by_kind.setdefault(mutant.kind, collections.Counter()), all_of_them):
            counts[outcome.verdict] += 1
    lines = ["".join([f"{'':34}{'all':>7}", *(f"{verdict:>11}" for verdict in trial.VERDICTS)])]
    for group in (by_file, by_kind, {"all": all_of_them}):
        lines.append("")
        lines += [row(name, counts) for name, counts in sorted(group.items())]
    killed = all_of_them[trial.KILLED] + all_of_them[trial.TIMED_OUT]
    tested = killed + all_of_them[trial.SURVIVED]
    share = f"{100 * killed / tested:.1f} %" if tested else "none"
    lines += ["", f"{killed} of {tested} changes that a test can see were killed: {share}; {seconds:.0f} s"]
    return "\n".join(lines)


def row(name, counts):
    return "".join([f"{name:34}{sum(counts.values()):7}", *(f"{counts[verdict]:11}" for verdict in trial.VERDICTS)])
