# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The root of the sources, and what the build file says of the whole."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]


def name_and_version():
    """The name of the executable, and the version that is built."""
    return re.search(r"^project\((\S+) VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE).groups()


def version():
    return name_and_version()[1]
