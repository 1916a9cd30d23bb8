# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The sources that are checked, and which of them a change affects."""

import re
import subprocess

from check_steps import paths


def find(*suffixes):
    """Paths relative to the root, without what is built."""
    folders = [folder for folder in paths.ROOT.iterdir() if folder.is_dir() and folder.name not in ("build", ".git")]
    return sorted(path.relative_to(paths.ROOT).as_posix() for folder in folders for path in folder.rglob("*")
                  if path.suffix in suffixes)


def affected(files, base):
    """Those of these sources that differ from a commit, or include what does, at however many removes."""
    def git(*words):
        return subprocess.run(["git", *words], cwd=paths.ROOT, check=True, capture_output=True,
                              text=True).stdout.splitlines()

    changed = {*git("diff", "--name-only", base, "--"), *git("ls-files", "--others", "--exclude-standard")}
    if changed & {".clang-tidy", "CMakeLists.txt", "cmake/flags.cmake"}:
        return files
    includes = {path: set(re.findall(r'^#include "(.+)"', (paths.ROOT / path).read_text(), re.MULTILINE))
                for path in find(".h", ".cpp")}
    while more := {path for path, names in includes.items() if names & changed} - changed:
        changed |= more
    return [path for path in files if path in changed]
