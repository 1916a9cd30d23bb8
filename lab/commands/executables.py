# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The executables that a lab runs, unless the environment names others."""

import os
import pathlib

import network

ROOT = network.FOLDER.parent


def program():
    return pathlib.Path(os.environ.get("HALVIK_DIAGNOSTIC") or ROOT / "build/release/halvik-diagnostic").absolute()


def reader():
    """What the results pages are made with, where it is built."""
    return pathlib.Path(os.environ.get("HALVIK_REPORT") or program().with_name("halvik-report")).absolute()
