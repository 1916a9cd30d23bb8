# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The list of equivalent mutants: changes that no test can see, each with the reason."""

import pathlib
import tomllib

PATH = pathlib.Path(__file__).with_name("unseen.toml")


class Unseen:
    """Knows a change by its file, its function, and the lines before and after it, wherever these stand."""

    def __init__(self, path=PATH):
        self.names = set()
        for entry in tomllib.loads(path.read_text()).get("unseen", []):
            if not entry["why"].strip():
                raise ValueError(f"{path}: no reason for {entry['changes']}")
            for change in entry["changes"]:
                self.names.add((entry["file"], entry["function"], " ".join(change.split())))

    def __contains__(self, mutant):
        return mutant.name in self.names

    def without_place(self, mutants):
        """The names that fit none of these mutants, though their files were looked at."""
        files = {mutant.file for mutant in mutants}
        return sorted(self.names - {mutant.name for mutant in mutants if mutant.file in files}
                      - {name for name in self.names if name[0] not in files})
