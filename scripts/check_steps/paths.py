# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Where the sources are, and the logs of the steps."""

import pathlib

ROOT = pathlib.Path(__file__).resolve().parents[2]
LOGS = ROOT / "build/check"
