# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Which calls of a scenario are to fail, by which errors, and the result of each."""

import collections
import errno
import random

from failing_calls.errors import ERRORS_OF, EXEMPT, NOT_FOREVER, OTHER_ERRORS, PASSING
from failing_calls.runs import WHOLE, Run

PHASES = ["loading", "setting up", "running", "delivering", "closing", "in a child"]

# The number is that among the calls of the same name since the run began, or since its window is to close.
Failure = collections.namedtuple("Failure", "scenario name by_child number error forever closing")
# reached: whether the run came to the call that was to fail.
Result = collections.namedtuple("Result", "failure verdict reached detail")


def count(kind):
    """The calls of an undisturbed run in their order, each with the phase of the run that it belongs to."""
    calls = []

    def note(call):
        calls.append((call.name, call.by_child, kind.is_closing))
        return 0

    run = Run(kind, note, let_through=EXEMPT)
    if run.verdict != WHOLE:
        raise AssertionError(f"{kind.name}: an undisturbed run: {run.verdict}: {run.detail}")
    ours = [name for name, by_child, _ in calls if not by_child]
    first_of_main = ours.index("fcntl") if kind.is_watched_from_start else 0
    first_pipe = next(place for place, name in enumerate(ours) if name in ("pipe", "pipe2"))
    last_wait = max(place for place, name in enumerate(ours) if name == "wait4")
    last_open = sum(not by_child and not closing for _, by_child, closing in calls)
    borders = [first_of_main, first_pipe, last_wait + 1, last_open, len(ours)]
    phases = [next(phase for phase, border in zip(PHASES, borders) if place < border) for place in range(len(ours))]
    children = [(name, True, PHASES[-1]) for name, by_child, _ in calls if by_child]
    return [(name, False, phase) for name, phase in zip(ours, phases)] + children


def failures(kind, calls, is_thorough=False):
    """Every failure to try, and the phase that it belongs to, by the calls that an undisturbed run makes.

    Each call fails by each of its errors; of calls that a run makes for each command, the errors take turns, unless it
    is to be thorough.
    """
    seen = collections.Counter()
    for name, by_child, phase in calls:
        closing = phase == "closing"
        number = seen[name, by_child, closing] = seen[name, by_child, closing] + 1
        if name in kind.unprotected and not by_child:
            continue
        errors = ERRORS_OF.get(name, OTHER_ERRORS)
        if number > 20 and not is_thorough:
            errors = [errors[number % len(errors)]]
        for error in errors:
            for forever in ([False, True] if number <= 3 or is_thorough else [False]):
                if not (forever and (error in PASSING or name in NOT_FOREVER)):
                    yield Failure(kind.name, name, by_child, number, error, forever, closing), phase


def sample(plan, size, seed):
    """So many of them, the same for the same seed, in their order."""
    if size is None or size >= len(plan):
        return plan
    return [plan[place] for place in sorted(random.Random(seed).sample(range(len(plan)), size))]


def attempt(kind, failure):
    """Runs the program with this failure."""
    seen = 0

    def decide(call):
        nonlocal seen
        if (call.name, call.by_child) != (failure.name, failure.by_child) or failure.closing and not kind.is_closing:
            return 0
        seen += 1
        hit = seen >= failure.number if failure.forever else seen == failure.number
        return getattr(errno, failure.error) if hit else 0

    kind.is_mute = failure.forever and failure.name in ("write", "writev")
    # With no memory for itself, the loader falls over before anything of the program has run.
    is_loader = kind.is_watched_from_start and (failure.name, failure.by_child, failure.number) == ("mmap", False, 1)
    run = Run(kind, decide, may_crash=is_loader, stop=[failure.name])
    return Result(failure, run.verdict, seen >= failure.number, run.detail)


def describe(result, phase):
    failure = result.failure
    which = f"{failure.name} no. {failure.number}" + (" and all after it" if failure.forever else "")
    return f"{result.verdict}: {failure.scenario}: {which} ({phase}), {failure.error}: {result.detail}"
