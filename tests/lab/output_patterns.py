# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Patterns in the blocks of a report, or in what the program prints."""

import dataclasses
import re

STDOUT, STDERR = "standard output", "standard error"
ONE, EVERY, SOME, NO = "", "every ", "some ", "no "


@dataclasses.dataclass(frozen=True)
class OutputPattern:
    """Make one by the functions below."""

    quantity: str
    place: str  # STDOUT, STDERR or a block's name; with a quantity other than ONE, how the names of blocks begin
    pattern: str

    def __str__(self):
        return f"in {self.quantity}{self.place}: {self.pattern}"

    def matches(self, streams, blocks):
        """Whether it matches a run that printed this on its streams, and had these blocks in its report."""
        if self.place in streams:
            texts = [streams[self.place]]
        elif self.quantity == ONE:
            texts = [content for name, content in blocks if name == self.place]
        else:
            texts = [content for name, content in blocks if name.startswith(self.place)]
        if not texts:
            return False  # not all runs have the same blocks
        if self.quantity == ONE and len(texts) > 1:
            raise AssertionError(f"{len(texts)} blocks are {self.place}")
        found = [re.search(self.pattern, text, re.MULTILINE) is not None for text in texts]
        return {ONE: all, EVERY: all, SOME: any, NO: lambda each: not any(each)}[self.quantity](found)


def in_one(place, pattern):
    return OutputPattern(ONE, place, pattern)


def in_every(place, pattern):
    return OutputPattern(EVERY, place, pattern)


def in_some(place, pattern):
    return OutputPattern(SOME, place, pattern)


def in_none(place, pattern):
    return OutputPattern(NO, place, pattern)
