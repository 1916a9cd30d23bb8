# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Every include points to a lower floor, or stays on its floor without going in a circle."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[1]
FOLDERS = ("app", "diagnostics", "platform", "report", "ui")
CONTROLLER_SUBJECTS = {
    "app/main_controller.cpp",
    "diagnostics/test_plan_run.cpp",
    "diagnostics/beacon_log_run.cpp",
    "diagnostics/run_tracking.cpp",
    "report/report_run.cpp",
    "report/delivery.cpp",
    "ui/window_control.cpp",
}
ONLY_IN_PLATFORM = re.compile(
    r"<(QNetwork\w+|QSsl\w*|(sys|netinet|arpa)/\S+|unistd\.h|fcntl\.h|poll\.h|spawn\.h|pwd\.h|signal\.h|csignal)>"
)


def floor(name):
    if name.startswith("platform/"):
        return 0
    if name == "app/main.cpp" or name.startswith(("app/entry.", "app/windowed_run.")):
        return 4
    if name in CONTROLLER_SUBJECTS:
        return 3
    return 2 if name == "app/main_controller.h" else 1


def sources():
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(ROOT).as_posix(), path.read_text()


class Floors(unittest.TestCase):
    def setUp(self):
        self.sources = dict(sources())
        self.includes = {
            name: re.findall(r'^#include "([^"]+)"', text, re.M)
            for name, text in self.sources.items()
        }
        self.assertGreater(len(self.sources), 40)

    def test_includes_never_point_up(self):
        wrong = [
            f"{name} includes {included}"
            for name, all_included in self.includes.items()
            for included in all_included
            if floor(included) > floor(name)
        ]
        self.assertEqual(wrong, [])

    def test_includes_go_in_no_circle(self):
        done = set()

        def visit(name, path):
            self.assertNotIn(name, path)
            if name not in done:
                for included in self.includes[name]:
                    visit(included, path + [name])
                done.add(name)

        for name in self.includes:
            visit(name, [])

    def test_system_headers_stay_in_platform(self):
        wrong = [
            f"{name} includes {found.group()}"
            for name, text in self.sources.items()
            if not name.startswith("platform/")
            for found in ONLY_IN_PLATFORM.finditer(text)
        ]
        self.assertEqual(wrong, [])


if __name__ == "__main__":
    unittest.main()
