# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The time of day, which anybody may set back in the middle of a run, is shown in log lines and decides on nothing."""

import re
import unittest

from project import ROOT

TIME_OF_DAY = re.compile(r"\b(gettimeofday|system_clock|CLOCK_REALTIME|timespec_get|time\(|localtime\w*|gmtime\w*"
                         r"|currentDateTime\w*|currentMSecsSinceEpoch|currentSecsSinceEpoch|QTime)\b")
SHOWN = "text/log.cpp"


class TimeOfDay(unittest.TestCase):
    def test_only_log_lines_have_it(self):
        found = set()
        for folder in ("app", "diagnostics", "platform", "report", "text", "ui"):
            for path in (ROOT / folder).rglob("*"):
                if path.suffix in (".h", ".cpp") and TIME_OF_DAY.search(path.read_text()):
                    found.add(path.relative_to(ROOT).as_posix())
        self.assertEqual(found, {SHOWN})


unittest.main()
