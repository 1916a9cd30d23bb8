# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""How a test file says that it is skipped whole."""

import importlib
import os
import shutil
import sys

SKIPPED = 77  # the exit status that ctest takes for a skip


def skip_file(reason):
    print(f"SKIPPED: {reason}", flush=True)
    sys.exit(SKIPPED)


def require_tools(*names):
    """Skips the calling test file where one of these is not installed."""
    os.environ["PATH"] += ":/usr/sbin:/sbin"
    missing = [name for name in names if not shutil.which(name)]
    if missing:
        skip_file(f"not installed: {', '.join(missing)}")


def require_modules(*names):
    """Skips the calling test file where one of these Python modules is not installed."""
    for name in names:
        try:
            importlib.import_module(name)
        except ImportError:
            skip_file(f"not installed: the Python module {name}")
