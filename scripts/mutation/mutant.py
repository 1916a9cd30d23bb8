# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A small change to a source file."""

import dataclasses


@dataclasses.dataclass(frozen=True, order=True)
class Mutant:
    """One small change to a file: the bytes from start to end give way to others."""

    file: str
    start: int
    end: int
    replacement: str
    kind: str = dataclasses.field(compare=False)
    function: str = dataclasses.field(compare=False)
    line: int = dataclasses.field(compare=False)
    before: str = dataclasses.field(compare=False)  # the lines that it changes, with single blanks
    after: str = dataclasses.field(compare=False)

    @property
    def name(self):
        """The same wherever in its function the change stands."""
        return self.file, self.function, f"{self.before} -> {self.after}".rstrip()

    def applied_to(self, source):
        return source[:self.start] + self.replacement.encode() + source[self.end:]
