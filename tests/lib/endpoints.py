# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The hosts, names and addresses that the program was built with."""

import os
import pathlib
import re

from project import ROOT

BUILT_IN = ROOT / "diagnostics/endpoints_built_in.cpp"


def roles():
    """Every role's value, by the role's name. A build with other values names its file in HALVIK_ENDPOINTS."""
    text = pathlib.Path(os.environ.get("HALVIK_ENDPOINTS", BUILT_IN)).read_text()
    return dict(re.findall(r'\.(\w+)\s*=\s*"([^"]*)"', text))
