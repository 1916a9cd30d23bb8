# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Every include points to a lower layer, or stays in its layer without going in a circle. What only some systems have
stays in the folder of those systems."""

import re
import unittest

from project import ROOT

FOLDERS = ("app", "diagnostics", "platform", "reader", "report", "ui")
# The reader of reports stands beside the program, in layers of its own.
READER_LAYERS = ("reader/parse/", "reader/facts/", "reader/rules/", "reader/output/", "reader/")
# What it uses of the program.
SHARED = {"diagnostics/beacon_logs.h", "diagnostics/endpoints.h", "diagnostics/test_plan.h", "diagnostics/test_starter.h"}
CONTROLLER_SUBJECTS = {
    "app/main_controller.cpp",
    "diagnostics/test_plan_run.cpp",
    "diagnostics/beacon_log_run.cpp",
    "diagnostics/run_tracking.cpp",
    "report/report_run.cpp",
    "report/delivery.cpp",
    "ui/window_control.cpp",
}
SYSTEM_INCLUDE = re.compile(r"^#include <([^>]+)>", re.M)
# Headers of the language and of Qt, but for those of signals and of the network.
EVERYWHERE = re.compile(r"(?!csignal$)[a-z_]+|Q(?!Network|Ssl)\w+")
READER_LIBRARIES = re.compile(r"CLI/CLI\.hpp|nlohmann/json(_fwd)?\.hpp")
POSIX = re.compile(r"(fcntl|poll|pthread|pwd|spawn|unistd|sys/(resource|stat|time|types|uio|wait))\.h")
# What the C library of Linux offers besides, in headers that POSIX has as well.
ONLY_ON_LINUX = re.compile(
    r"\b(accept4|clone|close_range|dup3|mkostemp|pipe2|program_invocation\w*|splice|statx|syscall|\w+_np|F_SETPIPE_SZ"
    r"|MADV_\w+|O_PATH)\b|/proc/"
)


def layer(name):
    if name.startswith("platform/"):
        return 0
    if name.startswith(("app/main.", "app/main_with_", "app/companions.", "app/entry.", "app/windowed_run.")):
        return 4
    if name in CONTROLLER_SUBJECTS:
        return 3
    return 2 if name == "app/main_controller.h" else 1


def sources():
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(ROOT).as_posix(), path.read_text()


class Layers(unittest.TestCase):
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
            if layer(included) > layer(name)
        ]
        self.assertEqual(wrong, [])

    def test_the_reader_stands_beside_the_program(self):
        def reader_layer(name):
            return next(number for number, folder in enumerate(READER_LAYERS) if name.startswith(folder))

        for name, all_included in self.includes.items():
            for included in all_included:
                if not name.startswith("reader/"):
                    self.assertFalse(included.startswith("reader/"), f"{name} includes {included}")
                elif included.startswith("reader/"):
                    # What the forms of output write to.
                    is_allowed = included == "reader/input.h" or reader_layer(included) <= reader_layer(name)
                    self.assertTrue(is_allowed, f"{name} includes {included}")
                else:
                    self.assertIn(included, SHARED, name)

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

    def foreign_includes(self, sources, allowed):
        return [
            f"{name} includes <{header}>"
            for name in sources
            for header in SYSTEM_INCLUDE.findall(self.sources[name])
            if not any(headers.fullmatch(header) for headers in allowed)
        ]

    def test_system_headers_stay_in_platform(self):
        above = [name for name in self.sources if not name.startswith(("platform/", "reader/"))]
        self.assertEqual(self.foreign_includes(above, [EVERYWHERE]), [])
        reader = [name for name in self.sources if name.startswith("reader/")]
        self.assertEqual(self.foreign_includes(reader, [re.compile("[a-z_]+"), READER_LIBRARIES]), [])

    def test_what_is_linuxs_own_stays_in_its_folder(self):
        portable = [name for name in self.sources if not name.startswith(("platform/linux/", "reader/"))]
        others = re.compile(r"Q(Network|Ssl)\w+|csignal|simdjson\.h")
        self.assertEqual(self.foreign_includes(portable, [EVERYWHERE, POSIX, others]), [])
        wrong = [
            f"{name} uses {found.group()}"
            for name in portable
            for found in ONLY_ON_LINUX.finditer(self.sources[name])
        ]
        self.assertEqual(wrong, [])

    def test_includes_of_a_system_stay_in_its_folder(self):
        wrong = [
            f"{name} includes {included}"
            for name, all_included in self.includes.items()
            for included in all_included
            if included.startswith("platform/linux/") and not name.startswith("platform/linux/")
            or included.startswith("platform/posix/") and not name.startswith(("platform/linux/", "platform/posix/"))
        ]
        self.assertEqual(wrong, [])

    def test_each_system_has_the_same_parts(self):
        def parts(folder):
            """The files of a folder, but for those that only the folder itself knows of."""
            sources = [name for name in self.sources if name.startswith(folder) and name.endswith(".cpp")]
            names = {name.removesuffix(".cpp") for name in sources}
            return {name.removeprefix(folder) for name in names if f"{name}.h" not in self.sources}

        shared = parts("platform/linux/")
        self.assertEqual(shared, parts("platform/posix/"))
        for part in shared:
            self.assertIn(f"platform/{part}.h", self.sources)


if __name__ == "__main__":
    unittest.main()
