# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the lab's README promises of each scenario, read from its tables."""

import dataclasses
import re

import labs

README = labs.FOLDER / "README.md"
STREAMS = ("standard output", "standard error")


@dataclasses.dataclass(frozen=True)
class Promise:
    """What becomes of a run in a scenario."""

    status: int
    is_submitted: bool


@dataclasses.dataclass(frozen=True)
class Sign:
    """What a run in a scenario shows."""

    quantity: str  # "" for the one block of this name or a stream, or else "every", "some" or "nowhere"
    place: str  # a stream, or how the names of blocks begin
    pattern: str

    def __str__(self):
        return f"{self.quantity or 'in'} {self.place}: {self.pattern}"

    def is_seen(self, streams, blocks):
        """Whether a run shows it that printed this on its streams, and had these blocks in its report."""
        if self.place in STREAMS:
            texts = [streams[self.place]]
        elif self.quantity:
            texts = [content for name, content in blocks if name.startswith(self.place)]
        else:
            texts = [content for name, content in blocks if name == self.place]
        if not texts:
            return False  # not all runs ask the same
        if not self.quantity and len(texts) > 1:
            raise AssertionError(f"{len(texts)} blocks are {self.place}")
        found = [re.search(self.pattern, text, re.MULTILINE) is not None for text in texts]
        return {"": all, "every": all, "some": any, "nowhere": lambda each: not any(each)}[self.quantity](found)


def promises():
    """Every scenario's promise, by its name."""
    rows = read_table("Scenario", "What it does", "Exit status", "Submitted", "Seconds")
    return {unquoted(name): Promise(int(status), {"yes": True, "no": False}[submitted])
            for name, _, status, submitted, _ in rows}


def signs():
    """Every scenario's signs, by its name."""
    found = {}
    for name, where, what in read_table("Scenario", "Where", "What is there"):
        nowhere, quantity, place = re.fullmatch(r"(?:(nowhere) )?in (?:(every|some) )?(.+)", where).groups("")
        place = place if place in STREAMS else unquoted(place)
        found.setdefault(unquoted(name), []).append(Sign(nowhere or quantity, place, unquoted(what)))
    return found


def read_table(*head):
    """The cells of the rows below this head."""
    lines = README.read_text(encoding="utf-8").splitlines()
    start = lines.index(f"| {' | '.join(head)} |") + 2
    rows = []
    for line in lines[start:]:
        if not line.startswith("|"):
            break
        cells = [cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
        if len(cells) != len(head):
            raise AssertionError(f"not a row of {len(head)} cells: {line}")
        rows.append(cells)
    return rows


def unquoted(cell):
    """What stands between the cell's backquotes; behind them there may be a remark."""
    return re.fullmatch(r"`([^`]+)`(?: \(.*\))?", cell)[1]
